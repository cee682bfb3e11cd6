#include "simulator/remote/DeviceSet.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <tuple>

#include "simulator/live/Json.h"
#include "simulator/remote/Refusal.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRecord = "device.json";

bool isUdid(const std::string& text) {
  if (text.size() != 36) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    if (dash ? text[i] != '-' : !std::isxdigit(static_cast<unsigned char>(text[i]))) return false;
  }
  return true;
}

std::string upperCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

/// Empty when it is not the folder of a device.
std::optional<DeviceRecord> read(const fs::path& folder) {
  std::ifstream file(folder / kRecord);
  std::stringstream text;
  text << file.rdbuf();
  const auto members = readJson(text.str());
  if (!members) return std::nullopt;
  const ios::PropertyList list(*members);
  DeviceRecord record;
  record.udid = folder.filename();
  record.folder = folder;
  for (const auto& [key, value] : {std::pair{"name", &record.name},
                                   {"profile", &record.profile},
                                   {"language", &record.language},
                                   {"textSize", &record.textSize}}) {
    const std::string* found = list.text(key);
    if (!found) return std::nullopt;
    *value = *found;
  }
  return record;
}

void removeTree(const fs::path& folder) {
  std::error_code error;
  fs::remove_all(folder, error);
  if (error) throw Refusal(Exit::inputOutput, "Could not remove " + folder.string() + ": " + error.message());
}

}  // namespace

std::string drawUdid() {
  std::array<unsigned char, 16> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    throw Refusal(Exit::system, "The system gives no random numbers.");
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789ABCDEF"[bytes[i] >> 4];
    text += "0123456789ABCDEF"[bytes[i] & 15];
  }
  return text;
}

DeviceSet DeviceSet::ofUser() {
  const auto variable = [](const char* name) {
    const char* value = std::getenv(name);
    return fs::path(value ? value : "");
  };
  if (const fs::path folder = variable("TELLVANE_DEVICES"); !folder.empty()) {
    std::error_code error;
    return DeviceSet(fs::absolute(folder, error).lexically_normal());
  }
  fs::path data = variable("XDG_DATA_HOME");
  if (!data.is_absolute()) {
    const fs::path home = variable("HOME");
    if (!home.is_absolute())
      throw Refusal(Exit::system,
                    "There is no folder for devices: set HOME, XDG_DATA_HOME or TELLVANE_DEVICES.");
    data = home / ".local/share";
  }
  return DeviceSet(data / "tellvane/devices");
}

std::vector<DeviceRecord> DeviceSet::all() const {
  std::vector<DeviceRecord> records;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    if (!isUdid(entry.path().filename())) continue;
    if (auto record = read(entry.path())) records.push_back(std::move(*record));
  }
  std::sort(records.begin(), records.end(),
            [](const auto& a, const auto& b) { return std::tie(a.name, a.udid) < std::tie(b.name, b.udid); });
  return records;
}

DeviceRecord DeviceSet::find(const std::string& nameOrUdid) const {
  const auto records = all();
  const DeviceRecord* found = nullptr;
  for (const auto& record : records) {
    if (record.udid == upperCase(nameOrUdid)) return record;
    if (record.name != nameOrUdid) continue;
    if (found)
      throw Refusal(Exit::usage, "Several devices are called \"" + nameOrUdid +
                                     "\". Name one by its identifier: tellvane-sim list devices");
    found = &record;
  }
  if (found) return *found;
  throw Refusal(Exit::noDevice, "There is no device \"" + nameOrUdid +
                                    "\". See those that there are with: tellvane-sim list devices");
}

DeviceRecord DeviceSet::create(DeviceRecord wanted) const {
  wanted.udid = drawUdid();
  wanted.folder = folder_ / wanted.udid;
  std::error_code error;
  fs::create_directories(wanted.folder, error);
  if (error)
    throw Refusal(Exit::cannotCreate, "Could not make " + wanted.folder.string() + ": " + error.message());
  ::chmod(wanted.folder.c_str(), 0700);
  write(wanted);
  return wanted;
}

void DeviceSet::rename(DeviceRecord record, const std::string& name) const {
  record.name = name;
  write(record);
}

void DeviceSet::write(const DeviceRecord& record) const {
  const fs::path file = record.folder / kRecord, fresh = record.folder / (std::string(kRecord) + ".new");
  std::ofstream stream(fresh, std::ios::trunc);
  stream << jsonText(ios::NSDictionary{{"name", record.name},
                                       {"profile", record.profile},
                                       {"language", record.language},
                                       {"textSize", record.textSize}})
         << "\n";
  if (!stream.flush() || std::rename(fresh.c_str(), file.c_str()) != 0)
    throw Refusal(Exit::inputOutput, "Could not write " + file.string() + ".");
}

void DeviceSet::erase(const DeviceRecord& record) const {
  const auto taken = take(record);
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(record.folder, error)) {
    if (entry.path().filename() != kRecord) removeTree(entry.path());
  }
}

void DeviceSet::remove(const DeviceRecord& record) const {
  const auto taken = take(record);
  // Without its record it is no device any more, should the rest take long or fail.
  std::error_code error;
  fs::remove(record.folder / kRecord, error);
  removeTree(record.folder);
}

ios::FileDescriptor DeviceSet::take(const DeviceRecord& record) {
  ios::FileDescriptor folder(::open(record.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder)
    throw Refusal(Exit::noDevice,
                  "There is no device at " + record.folder.string() + ": " + std::strerror(errno));
  if (::flock(folder.number(), LOCK_EX | LOCK_NB) != 0)
    throw Refusal(
        Exit::refused,
        "\"" + record.name + "\" is booted. Shut it down first: tellvane-sim shutdown " + record.udid);
  return folder;
}

}  // namespace simulator
