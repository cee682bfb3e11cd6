#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "simulator/live/Audience.h"
#include "simulator/live/Display.h"
#include "simulator/server/Routes.h"

namespace simulator {

/// Serves the phone to browsers: the page, files, and a connection for each viewer, on a thread of its own. What
/// viewers want goes into the inbox; what they are told comes through `Audience`.
class Server : public Audience {
 public:
  struct Options {
    std::string listen = "127.0.0.1";  // an address in numbers
    std::uint16_t port = 0;            // 0: any that is free
    Routes::Roots roots;
  };
  /// Takes the port; throws std::runtime_error with a line when it cannot be had. Nobody is answered before
  /// `open`.
  Server(const Options& options, CommandInbox& inbox, const Display& display);
  /// Says goodbye to every viewer.
  ~Server() override;

  void open();
  /// The address to open, with the token.
  std::string address() const;
  /// "/files/<key>/"
  std::string filePrefix() const;

  void topic(const std::string& name, std::string text) override;
  void topicOnDemand(const std::string& name, std::string text) override;
  void consoleLines(std::vector<std::string> lines) override;
  void remark(std::string text) override;
  void touchesApplied(ViewerId viewer, std::uint32_t number, bool visible) override;
  void displayChanged(const PixelRect& rect, std::chrono::nanoseconds time) override;
  std::string keepFile(const std::string& name, std::string bytes) override;

 private:
  std::unique_ptr<class ServerCore> core_;
};

}  // namespace simulator
