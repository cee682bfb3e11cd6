#pragma once

#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "simulator/live/FileSignature.h"

namespace simulator {

/// The photo library's albums and movies, for people to see. Main thread.
class PhotosWatch {
 public:
  /// `filePrefix`: "/files/<key>/"
  explicit PhotosWatch(std::string filePrefix) : filePrefix_(std::move(filePrefix)) {}

  /// The topic's value if there is something new since the last look.
  std::optional<ios::NSDictionary> look();

 private:
  const std::string filePrefix_;
  FileSignature movies_, database_, log_;
};

}  // namespace simulator
