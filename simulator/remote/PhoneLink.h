#pragma once

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <optional>
#include <string>

#include "Base/FileDescriptor.h"
#include "CoreFoundation/PropertyList.h"

namespace simulator {

/// A connection to a phone that is switched on: commands and their answers, and what the phone tells meanwhile.
///
/// Both ways go JSON objects, one a line. The phone first greets: "type" is "greeting", and it says who it is. A
/// command is {"id": number, "command": name, …}, its answer {"answer": number, …}, with "problem" if it was refused;
/// "bytes" in an answer says how many bytes follow the line. Other lines of the phone are news: {"type": topic, …}.
///
/// Waiting ends with Interrupted when the process is asked to end, and with a Refusal when the phone goes away.
class PhoneLink {
 public:
  /// The phone of that identifier; refused when it is not switched on.
  static PhoneLink open(const std::string& udid);

  struct Greeting {
    std::string udid, name, profile, folder, page;
    pid_t process = 0;
  };
  const Greeting& greeting() const { return greeting_; }

  struct Answer {
    ios::NSDictionary members;
    std::string bytes;
    std::string text(const std::string& key) const;
  };
  /// Sends a command and waits for its answer. What the phone refuses is a Refusal with its reason.
  Answer ask(const std::string& command, ios::NSDictionary members = {});
  /// The next of the phone's news, which `watch` asked for.
  ios::NSDictionary next();
  /// As `next`; empty when there is none until then.
  std::optional<ios::NSDictionary> nextWithin(std::chrono::milliseconds limit);
  /// Waits for the phone's process to end.
  void waitForEnd();

 private:
  PhoneLink(ios::FileDescriptor socket, std::string udid);
  std::string line(std::optional<std::chrono::steady_clock::time_point> deadline);
  bool readMore(std::optional<std::chrono::steady_clock::time_point> deadline);

  ios::FileDescriptor socket_, process_;
  Greeting greeting_;
  std::string buffer_;
  std::deque<ios::NSDictionary> news_;
  std::int64_t lastId_ = 0;
};

}  // namespace simulator
