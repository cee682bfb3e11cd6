#pragma once

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "Device/Device.h"
#include "DeviceClock/Clock.h"

/// A device in virtual time without an application, on a folder that goes with it. One per process.
class ScratchDevice {
 public:
  explicit ScratchDevice(const ios::DeviceSettings& settings = {}) {
    std::string name = (std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string();
    folder_ = ::mkdtemp(name.data());
    ios::Clock::shared().useVirtualTime();
    ios::Device::start(
        {.root = folder_, .mainBundle = folder_, .bundleIdentifier = {}, .settings = settings});
  }
  ~ScratchDevice() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchDevice(const ScratchDevice&) = delete;

  const std::filesystem::path& folder() const { return folder_; }
  /// A file of that name with these bytes, in place of an earlier one.
  std::filesystem::path write(const std::string& name, const std::uint8_t* data, std::size_t size) const {
    std::ofstream(folder_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return folder_ / name;
  }

 private:
  std::filesystem::path folder_;
};
