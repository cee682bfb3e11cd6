#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Device/Device.h"
#include "UIKit/Automation/VisibleElements.h"
#include "simulator/AppProcess.h"
#include "simulator/SpringBoard.h"

namespace simulator {

/// The phone in somebody's hand: its device folder, its clock, the application that runs on it as a process
/// of its own, and what it shows by itself. One application runs at a time beside the companion. Main thread,
/// one a process.
///
/// Operations that can be refused answer with the reason, empty if there is none. An application that ends by
/// itself is no one operation's fault: it is told by `takeFailure`, and the phone goes on from its home
/// screen.
class Phone {
 public:
  struct Options {
    std::filesystem::path folder;  // of the device; made anew
    ios::DeviceSettings settings;
    bool realTime = false;
    /// Folders of bundles that can be installed by identifier.
    std::vector<std::filesystem::path> catalog;
  };
  /// `timeMoved` is called whenever the phone's time may have moved on.
  Phone(const Options& options, Console& console, std::function<void()> timeMoved);
  ~Phone();

  // Applications.
  std::string install(const std::string& identifierOrFolder);
  std::string uninstall(const std::string& identifier);
  /// Every bundle of the catalog.
  std::string installAll();
  /// `sound` is what the application's microphone hears, as IOS_MICROPHONE says it.
  std::string launch(const std::string& identifier, const std::map<std::string, std::string>& arguments,
                     const std::string& sound = "silence");
  void bringToFront();
  std::string stop();
  /// Identifier of the application that runs; empty when there is none.
  std::string running() const { return app_ ? app_->bundleIdentifier() : ""; }
  std::string clearState(const std::string& identifier);
  std::string openLink(const std::string& link);

  // What a person does, on the screen in front.
  void tap(const ios::Input::Tap& tap);
  void swipe(ios::CGPoint from, ios::CGPoint to, ios::Clock::Duration duration);
  void shake();
  void pressHome();
  void turn(int orientation);
  void setPermissions(const std::string& identifier,
                      const std::map<std::string, ios::Permission>& permissions);
  void runFor(ios::Clock::Duration duration);

  // What a person sees.
  /// Lets animations come to rest, for so long at most.
  void settle(ios::Clock::Duration limit);
  std::vector<ios::VisibleElement> elements();
  ios::CGSize screenSize() const { return ios::Device::current().screenSize(); }
  /// PNG bytes; empty when the display shows nothing.
  ios::Bytes picture();

  /// How the application ended, if it did so by itself since the last call.
  std::optional<std::string> takeFailure() { return std::exchange(failure_, std::nullopt); }

 private:
  bool appIsInFront() const { return app_ && front_ == app_->bundleIdentifier(); }
  ios::NSDictionary ask(ios::NSDictionary request);
  ios::NSDictionary askApp(const ios::NSDictionary& request);
  void leaveApp(const std::string& front);
  void fulfil(const ScreenWish& wish);
  std::string backTo() const;
  std::optional<std::filesystem::path> inCatalog(const std::string& identifier) const;

  Options options_;
  Console& console_;
  std::function<void()> timeMoved_;
  std::unique_ptr<SpringBoard> springBoard_;
  std::unique_ptr<AppProcess> app_;
  std::string front_ = "home";
  std::string appsFront_;        // what the application last said is in front
  std::int64_t appsUptime_ = 0;  // ns
  std::optional<std::string> failure_;
};

}  // namespace simulator
