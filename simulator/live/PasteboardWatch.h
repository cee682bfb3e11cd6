#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "simulator/live/FileSignature.h"

namespace simulator {

/// What is on the pasteboard, taken apart for people to read, and what became of it. Main thread.
class PasteboardWatch {
 public:
  /// Keeps bytes for the audience to fetch, and gives their URL.
  using Keep = std::function<std::string(const std::string& name, std::string bytes)>;
  explicit PasteboardWatch(Keep keep) : keep_(std::move(keep)) {}

  /// The topic's value if the pasteboard has changed since the last look. `now`: the phone's time; `by`: the
  /// application that may have done it.
  std::optional<ios::NSDictionary> look(std::chrono::nanoseconds now, const std::string& by);

 private:
  ios::NSDictionary describe(const std::string& type, const ios::Bytes& bytes) const;
  void note(double time, const std::string& what, const std::string& by, const std::string& text);

  Keep keep_;
  FileSignature signature_;
  std::int64_t changes_ = 0;
  bool empty_ = true;
  ios::NSArray log_;
};

}  // namespace simulator
