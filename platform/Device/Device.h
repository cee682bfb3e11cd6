#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Mutex.h"
#include "Device/Applications.h"
#include "Device/Files.h"
#include "Device/Input.h"
#include "Device/ScreenProfile.h"
#include "Device/Settings.h"
#include "DeviceClock/Clock.h"

namespace ios {

/// The device this process runs on. The device is a folder, which survives restarts and can be inspected:
///
///     Applications/<bundle id>/      Info.plist, the executable, resources
///     Containers/<bundle id>/        the application's home: Documents/, tmp/
///     Media/                         the photo library; its movies in DCIM/
///     Pasteboard/general.plist       one file, replaced atomically; other processes read it
///     Settings.plist                 permissions, languages, text size, OS version, screen profile
///
/// A process learns its device from its environment, which `Applications::plan` composes. Of these variables
/// only the last three are passed on to the processes that it starts:
///     IOS_DEVICE          the folder; without it a fresh one below the system's temporary folder
///     IOS_BUNDLE          the application's own bundle folder; without it the folder of the executable
///     IOS_VIRTUAL_TIME    "<uptime ns> <wall clock ns since 1970>": the clock is virtual and starts there
///     IOS_OPEN_URL        the URL the application was launched to open
///     IOS_CONTROL         number of an open stream descriptor over which a driver steers the application
///     IOS_CODEC_FAULT     "<operation>:<count>": encoding fails after that many calls of it (CodecFault.h)
///     IOS_MICROPHONE      what the microphone hears: silence, absent, tone, tone:<hertz>, file:<path>, machine
///     IOS_FRAMEWORK_PATH  folders, separated by ":", in which frameworks are looked for
///     IOS_SEED            a number that shuffles what virtual time leaves open (DeviceClock/Ordering.h)
///
/// Main thread, except where a member says otherwise. Neither a disk error nor a file that grows beyond the
/// process's limit ends the process: the write fails, with a line on standard error.
class Device {
 public:
  struct Options {
    std::filesystem::path root;
    std::filesystem::path mainBundle;  // empty: the folder of the executable
    std::string bundleIdentifier;      // empty: read from the main bundle's Info.plist, else "unbundled"
    /// Written to Settings.plist; if not given, that file is read.
    std::optional<DeviceSettings> settings = std::nullopt;
  };

  /// The device; the first call starts it from the environment if `start` was not called.
  static Device& current();
  /// Starts the device of this process; to be called at most once, before `current`.
  static Device& start(Options options);

  const std::filesystem::path& root() const { return root_; }
  const std::filesystem::path& mainBundle() const { return mainBundle_; }
  const std::string& bundleIdentifier() const { return bundleIdentifier_; }
  /// Home folder of this process's application, created on first use. Any thread.
  std::filesystem::path home() const;
  /// Home folder of any application; `identifier` is a bundle identifier.
  std::filesystem::path homeOf(const std::string& identifier) const;
  std::filesystem::path pasteboardFile() const { return root_ / "Pasteboard" / "general.plist"; }
  /// The photo library, and the movies in it.
  std::filesystem::path mediaFolder() const { return root_ / "Media"; }
  std::filesystem::path moviesFolder() const { return mediaFolder() / "DCIM"; }

  /// Main thread; what other threads need is available through the operations below.
  const DeviceSettings& settings() const { return settings_; }
  /// Changes settings and saves them. If the disk fails, they stay changed for this process, with a line on
  /// standard error. What another process has saved meanwhile is read first.
  void changeSettings(const std::function<void(DeviceSettings&)>& change);
  /// Reads Settings.plist again, after another process changed it. A damaged one is set aside
  /// as Settings.plist.damaged.
  void reloadSettings();
  std::string osVersion() const;  // any thread
  /// The user's languages, most preferred first. Any thread.
  std::vector<std::string> languages() const;
  TextSize textSize() const;                                // any thread
  Permission permission(const std::string& service) const;  // this process's application; any thread
  void setPermission(const std::string& service, Permission answer);

  const ScreenProfile& profile() const;  // any thread
  /// The screen in points, as the device is held: sides swapped in landscape. Any thread.
  CGSize screenSize() const;
  /// The hardware code that `uname` answers; tests may set another.
  std::string machine() const;  // any thread
  void setMachine(std::string machine);

  Applications& applications() { return applications_; }
  Input& input() { return input_; }

  /// Called on the main thread after settings changed.
  void addSettingsObserver(std::function<void()> observer) { observers_.push_back(std::move(observer)); }

 private:
  explicit Device(Options options);
  Device(const Device&) = delete;
  std::filesystem::path settingsFile() const { return root_ / "Settings.plist"; }
  /// The file's settings; empty when there is no file, or when it was damaged and has been set aside.
  std::optional<DeviceSettings> readSettings() const;
  void writeSettings();
  void replaceSettings(DeviceSettings settings);
  void tellObservers();

  std::filesystem::path root_, mainBundle_;
  std::string bundleIdentifier_;
  /// Guards what any thread may read: settings_ (written on the main thread), machineOverride_ and the state
  /// of the home folder.
  mutable Mutex mutex_;
  DeviceSettings settings_;
  bool unsaved_ = false;  // settings_ has changes that could not be saved
  std::optional<std::string> machineOverride_ IOS_GUARDED_BY(mutex_);
  mutable bool homeMade_ IOS_GUARDED_BY(mutex_) = false;
  mutable bool homeRefused_ IOS_GUARDED_BY(mutex_) = false;
  Applications applications_{*this};
  Input input_;
  std::vector<std::function<void()>> observers_;
};

/// Writes one line on standard error: "tellvane-platform: could not write …". Any thread.
void deviceLog(const std::string& line);

}  // namespace ios
