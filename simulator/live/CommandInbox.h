#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "Base/Mutex.h"
#include "CoreFoundation/PropertyList.h"
#include "Device/Input.h"

namespace simulator {

/// Who sends commands: a page that is open, or a program. Numbers are never used twice.
using ViewerId = std::uint64_t;

/// A command with its members, "command" among them. `answer` is called once, on the main thread, with what the
/// command gave; a "problem" in it says that it was refused.
struct LiveCommand {
  ViewerId viewer = 0;
  ios::NSDictionary members;
  std::function<void(ios::NSDictionary)> answer;
  /// Whether a program of the phone's own user asks, which may name files and get bytes.
  bool fromProgram = false;
};
/// Changes of a viewer's fingers, which it counts from 0; `number` is the viewer's own, and grows.
struct LiveTouches {
  ViewerId viewer = 0;
  std::uint32_t number = 0;
  std::vector<ios::TouchSample> samples;
};
/// The viewer now wants these of the topics that are made on demand.
struct LiveWatch {
  ViewerId viewer = 0;
  std::set<std::string> topics;
};
struct LiveDeparture {
  ViewerId viewer = 0;
};
using LiveItem = std::variant<LiveCommand, LiveTouches, LiveWatch, LiveDeparture>;

/// What people and programs want of the phone, in the order in which it came; any thread puts in, the main
/// thread takes out.
class CommandInbox {
 public:
  CommandInbox();
  ~CommandInbox();
  CommandInbox(const CommandInbox&) = delete;

  void put(LiveItem item);
  /// The oldest item; false if there is none.
  bool take(LiveItem& item);
  /// Returns when there is an item, or `wake` was called, or at the deadline.
  void waitUntil(std::chrono::steady_clock::time_point deadline);
  /// Ends a wait, or the next one. Also from a signal handler.
  void wake() noexcept;
  /// Readable after `put` and `wake`, until `acknowledge` or the end of a wait: for those who wait for more.
  int descriptor() const { return event_; }
  void acknowledge();

 private:
  const int event_;
  ios::Mutex mutex_;
  std::deque<LiveItem> items_ IOS_GUARDED_BY(mutex_);
};

}  // namespace simulator
