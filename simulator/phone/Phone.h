#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Device/Device.h"
#include "UIKit/VisibleElements.h"
#include "simulator/phone/AppProcess.h"
#include "simulator/phone/SpringBoard.h"

namespace simulator {

/// The phone in somebody's hand: its device folder, its clock, the application that runs on it as a process
/// of its own, and what it shows by itself. One application runs at a time beside the companion. Main thread,
/// one per process.
///
/// Operations that can be refused answer with the reason, empty if there is none. An application that ends by
/// itself is reported by `takeFailure`, and the phone goes on from its home screen.
class Phone {
 public:
  struct LaunchOptions {
    std::map<std::string, std::string> arguments;
    std::string sound = "silence";  // what its microphone hears, as IOS_MICROPHONE says it
  };
  struct Options {
    std::filesystem::path folder;                 // of the device
    std::optional<ios::DeviceSettings> settings;  // without them those that the device has
    bool realTime = false;
    /// Folders of bundles that can be installed by identifier.
    std::vector<std::filesystem::path> catalog;
    /// How long an application may take to answer, on the wall clock.
    std::chrono::milliseconds patience = std::chrono::minutes(2);
    /// Puts the picture of what is in front into memory with every step.
    bool sharesDisplay = false;
    AppProcess::Attendance attendance = {};
    /// How to launch an application from its icon; without it, with default options.
    std::function<LaunchOptions(const std::string& identifier)> launchOptions = {};
    /// Ends the application when it is raised, even one that hangs.
    std::shared_ptr<const Interrupt> interrupt = std::make_shared<Interrupt>();
  };
  /// `timeMoved` is called whenever the phone's time may have moved on.
  Phone(const Options& options, Console& console, std::function<void()> timeMoved);
  virtual ~Phone();
  Phone(const Phone&) = delete;

  // Applications.
  std::string install(const std::string& identifierOrFolder);
  std::string uninstall(const std::string& identifier);
  /// Every bundle of the catalog.
  std::string installAll();
  /// `sound` is what the application's microphone hears, as IOS_MICROPHONE says it, and `codecFault` when its
  /// encoders fail, as IOS_CODEC_FAULT does.
  std::string launch(const std::string& identifier, const std::map<std::string, std::string>& arguments,
                     const std::string& sound = "silence", const std::string& codecFault = {});
  void bringToFront();
  std::string stop();
  /// Ends the application at once, in whatever state it is.
  void kill();
  /// Identifier of the application that runs, or is being started; empty when there is none.
  std::string running() const { return app_ ? app_->bundleIdentifier() : starting_; }
  std::string clearState(const std::string& identifier);
  std::string openLink(const std::string& link);
  /// Bundles that can be installed by identifier, with their names.
  std::map<std::string, std::string> catalog() const;

  // What a person does, on the screen in front.
  virtual void tap(const ios::automation::Tap& tap);
  virtual void swipe(ios::CGPoint from, ios::CGPoint to, ios::Clock::Duration duration);
  virtual void touch(const std::vector<ios::TouchSample>& samples) { step({}, samples); }
  void shake();
  void pressHome();
  void turn(int orientation);
  void setPermissions(const std::string& identifier,
                      const std::map<std::string, ios::Permission>& permissions);
  /// Puts a copy of a movie into the photo library.
  std::string addMovie(const std::filesystem::path& movie);
  virtual void runFor(ios::Clock::Duration duration);
  /// Changes the settings, and tells the application.
  void changeSettings(const std::function<void(ios::DeviceSettings&)>& change);
  /// Ends the application and changes the settings: the phone begins anew at its home screen.
  std::string restart(const std::function<void(ios::DeviceSettings&)>& change);
  /// Limits the size of the application's files, now and after every start; a negative number lifts
  /// the limit.
  void limitFiles(std::int64_t bytes);
  /// What fingers do, and then this much time. The picture is put into the display's memory if it is `shown`.
  ios::automation::Step::Answer step(ios::Clock::Duration duration,
                                     const std::vector<ios::TouchSample>& touches, bool shown = true);

  // What a person sees.
  /// What is in front: "home", an application's identifier, a page's URL.
  const std::string& front() const { return front_; }
  /// The picture as of the last step.
  std::span<const std::uint8_t> displayBytes() const { return display_->bytes(); }
  /// Lets animations come to rest, for at most this long.
  virtual void settle(ios::Clock::Duration limit);
  std::vector<ios::VisibleElement> elements();
  ios::automation::Tree::Answer tree();
  ios::CGSize screenSize() const { return ios::Device::current().screenSize(); }
  /// PNG bytes; empty when the display shows nothing.
  ios::Bytes picture();

  /// Whether the interrupt was raised.
  bool wasInterrupted() const { return options_.interrupt->isRaised(); }
  /// How the application ended, if it did so by itself since the last call.
  std::optional<std::string> takeFailure() { return std::exchange(failure_, std::nullopt); }

 private:
  bool appIsInFront() const { return app_ && front_ == app_->bundleIdentifier(); }
  /// Asks whatever is in front. An answer that does not come is a default-constructed one.
  template <class Request>
  typename Request::Answer ask(const Request& request);
  template <class Request>
  typename Request::Answer askApp(const Request& request);
  /// Takes over what each answer says.
  void heed(const ios::automation::Status& status);
  void leaveApp(const std::string& front);
  void fulfil(const ScreenWish& wish);
  std::string backTo() const;
  std::optional<std::filesystem::path> inCatalog(const std::string& identifier) const;

  Options options_;
  Console& console_;
  std::function<void()> timeMoved_;
  std::shared_ptr<ios::DisplayMemory> display_;
  std::unique_ptr<SpringBoard> springBoard_;
  std::unique_ptr<AppProcess> app_;
  std::int64_t fileLimit_ = -1;
  std::string starting_;
  std::string front_ = "home";
  std::string appsFront_;  // what the application last said is in front
  ios::Clock::Duration appsUptime_{};
  std::optional<std::string> failure_;
};

}  // namespace simulator
