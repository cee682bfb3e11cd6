#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "Device/Device.h"
#include "UIKit/AutomationServer.h"
#include "UIKit/ControlChannel.h"
#include "UIKit/UIApplication.h"

namespace ios {
namespace {

volatile std::sig_atomic_t toldToEnd = 0;

std::optional<FileDescriptor> controlDescriptor() {
  const char* text = std::getenv("IOS_CONTROL");
  if (!text || !*text) return std::nullopt;
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (*end || number < 0 || number > 1 << 20) {
    deviceLog("IOS_CONTROL is not a descriptor: " + std::string(text));
    return std::nullopt;
  }
  return FileDescriptor(static_cast<int>(number));
}

void serve(UIApplication& application, FileDescriptor descriptor) {
  ControlChannel channel(std::move(descriptor));
  AutomationServer server(application);
  while (!server.hasEnded()) {
    const auto request = channel.receive();
    if (!request || !channel.send(server.answer(*request))) return;
  }
}

void runInRealTime() {
  std::signal(SIGTERM, [](int) { toldToEnd = 1; });
  std::signal(SIGINT, [](int) { toldToEnd = 1; });
  // A signal handler cannot wake the clock, so the flag is looked at now and then.
  while (!toldToEnd)
    (void)Clock::shared().runUntil([] { return toldToEnd != 0; }, std::chrono::milliseconds(250));
}

}  // namespace

int UIApplicationMain(int argc, char** argv, std::shared_ptr<UIApplicationDelegate> delegate) {
  (void)argc;
  (void)argv;
  Device::current();  // the clock must be chosen before anything is scheduled
  UIApplication& application = *UIApplication::sharedApplication();
  application.showPermissionAlerts();
  application.launch(std::move(delegate));
  if (const char* text = std::getenv("IOS_OPEN_URL")) {
    const auto url = NSURL::URLWithString(text);
    if (url && application.delegate()) application.delegate()->applicationOpenURL(application, *url);
  }
  if (auto descriptor = controlDescriptor()) {
    serve(application, std::move(*descriptor));
  } else if (Clock::shared().isVirtual()) {
    // Nothing moves time: only what can run now will ever run.
    Clock::shared().runUntilRest();
  } else {
    runInRealTime();
  }
  application.terminate();
  std::fflush(stdout);
  return EXIT_SUCCESS;
}

}  // namespace ios
