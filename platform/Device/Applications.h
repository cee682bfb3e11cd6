#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "Device/ChildProcess.h"
#include "Device/Files.h"

namespace ios {

class Device;

/// An application on the device: a folder Applications/<bundle id>/ with an Info.plist that
/// names its executable.
struct InstalledApplication {
  std::string bundleIdentifier;
  std::filesystem::path bundle;
  NSDictionary info;
  /// Empty when Info.plist names no program inside the bundle; `problem` then says why.
  std::filesystem::path executable(std::string& problem) const;
  bool claims(const std::string& scheme) const;  // ignoring case
};

/// Whether `identifier` can name an application: letters, digits, ".", "-" and "_", not beginning with ".",
/// so that it is safe as a folder name.
bool isBundleIdentifier(const std::string& identifier);

/// What an application is told when it is started, besides its device.
struct LaunchWords {
  std::vector<std::string> arguments = {};
  std::optional<std::string> url = {};         // IOS_OPEN_URL
  std::optional<std::string> microphone = {};  // IOS_MICROPHONE; by default this process's own
  std::optional<int> control = {};             // IOS_CONTROL
  std::string codecFault = {};                 // IOS_CODEC_FAULT; empty for none
};

/// How a launched process ended up, once it has exited.
struct LaunchResult {
  /// False when there is no process: `problem` says why.
  bool started = false;
  /// Exit status, or 128 + the signal that ended it.
  int status = 0;
  std::string problem;
};

/// The applications in the device's folder.
class Applications {
 public:
  explicit Applications(Device& device) : device_(device) {}

  /// Copies a bundle folder in, replacing an earlier one with that identifier, which stays until the
  /// copy is complete.
  [[nodiscard]] std::optional<FileError> install(const std::filesystem::path& bundle);
  /// Removes the bundle; its container stays. Does nothing if there is no such application.
  [[nodiscard]] std::optional<FileError> uninstall(const std::string& bundleIdentifier);
  /// Sorted by identifier. A folder without an Info.plist that names its identifier is left out, with a line
  /// on standard error.
  std::vector<InstalledApplication> all() const;
  std::optional<InstalledApplication> withIdentifier(const std::string& bundleIdentifier) const;
  /// The first application, by identifier, that claims the URL's scheme.
  std::optional<InstalledApplication> forScheme(const std::string& scheme) const;

  /// The process to start for the application: its executable, in the environment described in Device.h.
  /// Empty when its executable cannot be started; `problem` says why. Any thread.
  std::optional<ChildProcess::Plan> plan(const InstalledApplication& application, const LaunchWords& words,
                                         std::string& problem) const;
  /// Starts the application's executable as a process of its own, told to open `url`. Returns at once;
  /// `finished` is called on the main queue when the process has ended. Virtual time stands still until then;
  /// a process that takes longer than 30 real seconds is killed. Its standard input is empty, and both its
  /// outputs go to this process's standard error: the host's standard output is the phone's console, on which
  /// the new process must not write.
  void launch(const InstalledApplication& application, const std::string& url,
              std::function<void(const LaunchResult&)> finished);
  /// Replaces the limit of 30 real seconds.
  void setTimeLimit(std::chrono::milliseconds limit) { timeLimit_ = limit; }

 private:
  std::filesystem::path folder() const;
  Device& device_;
  std::chrono::milliseconds timeLimit_ = std::chrono::seconds(30);
};

}  // namespace ios
