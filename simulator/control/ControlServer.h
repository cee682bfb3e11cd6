#pragma once

#include <memory>
#include <string>

#include "simulator/live/Audience.h"

namespace simulator {

/// Serves the phone to programs of its user: a socket, whose protocol remote/PhoneLink.h describes, on a thread of its
/// own. What programs want goes into the inbox; what they are told comes through `Audience`. Connections of other
/// users are closed, and so is one whose messages are too long, are no commands, or that does not read.
class ControlServer : public Audience {
 public:
  struct Options {
    std::string udid;
    ios::NSDictionary greeting;
  };
  /// Listens, so that nobody else can; nobody is answered before `open`. Throws a Refusal.
  ControlServer(Options options, CommandInbox& inbox);
  /// The socket goes, and every connection ends.
  ~ControlServer() override;

  void open();

  void topic(const std::string& name, std::string text) override;
  void topicOnDemand(const std::string&, std::string) override {}
  void consoleLines(std::vector<std::string> lines) override;
  void remark(std::string) override {}
  void touchesApplied(ViewerId, std::uint32_t, bool) override {}
  void displayChanged(const PixelRect&, std::chrono::nanoseconds) override {}
  /// Programs get what they ask for with the answer.
  std::string keepFile(const std::string&, std::string) override { return {}; }

 private:
  std::unique_ptr<class ControlCore> core_;
};

}  // namespace simulator
