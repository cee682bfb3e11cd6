#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Base/FileDescriptor.h"

namespace simulator {

/// A phone that exists, whether it is switched on or not: a folder of the user's.
struct DeviceRecord {
  std::string udid;  // "4F6C1A8E-…", drawn when it was made
  std::string name;
  std::string profile = "iPhone 6", language = "en-US", textSize = "L";
  std::filesystem::path folder;

  /// The device as the phone keeps it: applications, their data, photo library, settings.
  std::filesystem::path device() const { return folder / "device"; }
  /// What the phone's own process wrote since it was booted.
  std::filesystem::path log() const { return folder / "phone.log"; }
};

/// The user's phones. Other processes make and remove them at the same time; each operation is whole or not done.
/// Whatever cannot be done is thrown as a Refusal.
class DeviceSet {
 public:
  explicit DeviceSet(std::filesystem::path folder) : folder_(std::move(folder)) {}
  /// $TELLVANE_DEVICES, or tellvane/devices in the user's folder for data.
  static DeviceSet ofUser();

  /// By name, then by identifier.
  std::vector<DeviceRecord> all() const;
  /// By identifier, or by a name that only one has.
  DeviceRecord find(const std::string& nameOrUdid) const;
  DeviceRecord create(DeviceRecord wanted) const;
  void rename(DeviceRecord record, const std::string& name) const;
  /// Removes what is on it.
  void erase(const DeviceRecord& record) const;
  void remove(const DeviceRecord& record) const;

  /// Takes the device for this process, until the descriptor is closed; refused while another has it.
  static ios::FileDescriptor take(const DeviceRecord& record);

 private:
  void write(const DeviceRecord& record) const;
  std::filesystem::path folder_;
};

/// An identifier that no other device has.
std::string drawUdid();

}  // namespace simulator
