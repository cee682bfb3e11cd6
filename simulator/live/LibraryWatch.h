#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "simulator/live/FileSignature.h"

namespace simulator {

/// What applications have left on the device for people to see: the photo library's movies, the companion's reports.
/// Main thread.
class LibraryWatch {
 public:
  /// `filePrefix`: "/files/<key>/"
  explicit LibraryWatch(std::string filePrefix) : filePrefix_(std::move(filePrefix)) {}

  // The topic's value if there is something new since the last look.
  std::optional<ios::NSDictionary> photos();
  std::optional<ios::NSDictionary> inbox();

 private:
  const std::string filePrefix_;
  FileSignature movies_, database_, log_, inbox_;
};

}  // namespace simulator
