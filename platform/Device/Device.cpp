#include "Device/Device.h"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "Base/Output.h"
#include "Base/Programming.h"
#include "Dispatch/Queue.h"

namespace ios {
namespace {

namespace fs = std::filesystem;

constexpr int kLargeMemory = 256 * 1024;

std::atomic<Device*> theDevice = nullptr;
Mutex startMutex;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

fs::path executableFolder() {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::current_path(error) : executable.parent_path();
}

fs::path freshRoot() {
  std::error_code error;
  fs::path base = fs::temp_directory_path(error);
  if (error) base = "/tmp";
  std::string pattern = (base / "tellvane-device-XXXXXX").string();
  if (::mkdtemp(pattern.data())) return pattern;
  deviceLog("could not create a folder for the device in " + base.string());
  return base / ("tellvane-device-" + std::to_string(::getpid()));
}

/// "<uptime ns> <wall clock ns since 1970>"
void adoptVirtualTime(const std::string& text) {
  if (text.empty() || Clock::shared().isVirtual()) return;
  std::int64_t uptime = 0, wall = 0;
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, uptime);
  const bool separated = first.ec == std::errc() && first.ptr != end && *first.ptr == ' ';
  const auto second = separated ? std::from_chars(first.ptr + 1, end, wall) : first;
  if (!separated || second.ec != std::errc() || second.ptr != end || uptime < 0 || wall < 0) {
    deviceLog("IOS_VIRTUAL_TIME is not two numbers of nanoseconds: \"" + text + "\"; the clock stays real");
    return;
  }
  Clock::shared().useVirtualTime(Clock::Instant(Clock::Duration(uptime)),
                                 Clock::WallTime(Clock::Duration(wall)));
}

std::string identifierOf(const fs::path& bundle) {
  constexpr const char* kUnbundled = "unbundled";
  std::error_code error;
  const fs::path file = bundle / "Info.plist";
  if (!fs::exists(file, error)) return kUnbundled;
  std::string problem;
  const auto info = PropertyList::parse(file, &problem);
  if (!info) {
    deviceLog(file.string() + " " + problem);
    return kUnbundled;
  }
  const std::string* identifier = info->text(kCFBundleIdentifierKey);
  if (identifier && isBundleIdentifier(*identifier)) return *identifier;
  deviceLog(file.string() + " has no usable CFBundleIdentifier");
  return kUnbundled;
}

}  // namespace

void deviceLog(const std::string& line) {
  writeErrors("tellvane-platform: " + line + "\n");
}

Device& Device::current() {
  if (Device* device = theDevice.load(std::memory_order_acquire)) return *device;
  MutexLock lock(startMutex);
  if (Device* device = theDevice.load(std::memory_order_acquire)) return *device;
  adoptVirtualTime(environment("IOS_VIRTUAL_TIME"));
  Options options;
  options.root = environment("IOS_DEVICE");
  options.mainBundle = environment("IOS_BUNDLE");
  theDevice.store(new Device(std::move(options)), std::memory_order_release);
  return *theDevice;
}

Device& Device::start(Options options) {
  MutexLock lock(startMutex);
  if (theDevice.load(std::memory_order_acquire))
    programmingError("the device of this process was started already");
  theDevice.store(new Device(std::move(options)), std::memory_order_release);
  return *theDevice;
}

Device::Device(Options options) {
  ::signal(SIGXFSZ, SIG_IGN);  // so that a write beyond the limit fails with EFBIG
  // Pictures and encoders get mappings of their own, which go back to the system as a whole. Left to itself the C
  // library moves this limit beyond the first picture that is freed, and then each thread keeps memory for its next.
  ::mallopt(M_MMAP_THRESHOLD, kLargeMemory);
  std::error_code error;
  root_ = options.root.empty() ? freshRoot() : fs::absolute(options.root, error).lexically_normal();
  if (!root_.has_filename()) root_ = root_.parent_path();
  nameFilesRelativeTo(root_);
  if (auto problem = createFolder(root_)) deviceLog(problem->description());
  for (const auto& folder : {root_, root_ / "Pasteboard", root_ / "Applications"})
    sweepTemporaryFiles(folder);

  mainBundle_ = options.mainBundle.empty() ? executableFolder() : fs::absolute(options.mainBundle, error);
  bundleIdentifier_ = options.bundleIdentifier.empty() ? identifierOf(mainBundle_) : options.bundleIdentifier;
  if (!isBundleIdentifier(bundleIdentifier_)) {
    programmingError("\"" + bundleIdentifier_ + "\" cannot be a bundle identifier");
  }

  if (options.settings) {
    settings_ = std::move(*options.settings);
    writeSettings();
  } else if (auto read = readSettings()) {
    settings_ = std::move(*read);
  } else {
    writeSettings();
  }
}

fs::path Device::homeOf(const std::string& identifier) const {
  if (!isBundleIdentifier(identifier))
    programmingError("\"" + identifier + "\" cannot be a bundle identifier");
  return root_ / "Containers" / identifier;
}

fs::path Device::home() const {
  const fs::path home = homeOf(bundleIdentifier_);
  {
    MutexLock lock(mutex_);
    if (homeMade_) return home;
  }
  auto problem = createFolder(home / "Documents");
  if (!problem) problem = createFolder(home / "tmp");
  MutexLock lock(mutex_);
  homeMade_ = !problem;
  // The folder is asked for often; report the failure once.
  if (problem && !std::exchange(homeRefused_, true)) deviceLog(problem->description());
  return home;
}

std::optional<DeviceSettings> Device::readSettings() const {
  std::error_code error;
  const fs::path file = settingsFile();
  if (!fs::exists(file, error)) return std::nullopt;
  std::string problem;
  const auto list = PropertyList::parse(file, &problem);
  auto settings = list ? settingsFromPropertyList(*list, problem) : std::nullopt;
  if (settings) return settings;
  const fs::path aside = root_ / "Settings.plist.damaged";
  if (auto refused = renameFile(file, aside)) {
    deviceLog("Settings.plist is damaged (" + problem + ") and " + refused->description());
  } else {
    deviceLog("Settings.plist is damaged (" + problem + "); it was set aside as Settings.plist.damaged");
  }
  return std::nullopt;
}

void Device::writeSettings() {
  const std::string xml = settingsPropertyList(settings_).xml();
  const auto problem =
      writeFileAtomically(settingsFile(), {reinterpret_cast<const std::uint8_t*>(xml.data()), xml.size()});
  unsaved_ = problem.has_value();
  if (problem) deviceLog(problem->description());
}

void Device::replaceSettings(DeviceSettings settings) {
  MutexLock lock(mutex_);
  settings_ = std::move(settings);
}

void Device::tellObservers() {
  // Copied, since an observer may add others; those are called from the next change on.
  const auto observers = observers_;
  for (const auto& observer : observers) observer();
}

void Device::changeSettings(const std::function<void(DeviceSettings&)>& change) {
  assertMainThread("Device::changeSettings");
  DeviceSettings settings = settings_;
  if (!unsaved_) {
    if (auto read = readSettings()) settings = std::move(*read);
  }
  change(settings);
  replaceSettings(std::move(settings));
  writeSettings();
  tellObservers();
}

void Device::reloadSettings() {
  assertMainThread("Device::reloadSettings");
  auto read = readSettings();
  if (!read || *read == settings_) return;
  replaceSettings(std::move(*read));
  unsaved_ = false;
  tellObservers();
}

std::string Device::osVersion() const {
  MutexLock lock(mutex_);
  return settings_.osVersion;
}

std::vector<std::string> Device::languages() const {
  MutexLock lock(mutex_);
  return settings_.languages;
}

TextSize Device::textSize() const {
  MutexLock lock(mutex_);
  return settings_.textSize;
}

Permission Device::permission(const std::string& service) const {
  MutexLock lock(mutex_);
  const auto application = settings_.permissions.find(bundleIdentifier_);
  if (application == settings_.permissions.end()) return Permission::notDetermined;
  const auto answer = application->second.find(service);
  return answer == application->second.end() ? Permission::notDetermined : answer->second;
}

void Device::setPermission(const std::string& service, Permission answer) {
  changeSettings(
      [&](DeviceSettings& settings) { settings.permissions[bundleIdentifier_][service] = answer; });
}

const ScreenProfile& Device::profile() const {
  MutexLock lock(mutex_);
  const ScreenProfile* named = ScreenProfile::named(settings_.profile);
  return named ? *named : *ScreenProfile::named(DeviceSettings().profile);
}

CGSize Device::screenSize() const {
  const CGSize size = profile().size;
  MutexLock lock(mutex_);
  const bool landscape = settings_.orientation == 3 || settings_.orientation == 4;
  return landscape ? CGSize{size.height, size.width} : size;
}

std::string Device::machine() const {
  {
    MutexLock lock(mutex_);
    if (machineOverride_) return *machineOverride_;
  }
  return profile().machine;
}

void Device::setMachine(std::string machine) {
  MutexLock lock(mutex_);
  machineOverride_ = std::move(machine);
}

}  // namespace ios
