#pragma once

#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "simulator/live/FileSignature.h"

namespace simulator {

/// The companion's reports, for people to see. Main thread.
class InboxWatch {
 public:
  /// `filePrefix`: "/files/<key>/"
  explicit InboxWatch(std::string filePrefix) : filePrefix_(std::move(filePrefix)) {}

  /// The topic's value if there is something new since the last look.
  std::optional<ios::NSDictionary> look();

 private:
  const std::string filePrefix_;
  FileSignature folder_;
};

}  // namespace simulator
