#include "Darwin/utsname.h"

#include <cstring>

#include "Device/Device.h"

namespace ios {
namespace {

void fill(char (&field)[256], const std::string& text) {
  std::memset(field, 0, sizeof field);
  std::memcpy(field, text.data(), std::min(text.size(), sizeof field - 1));
}

}  // namespace

int uname(utsname* record) {
  const Device& device = Device::current();
  fill(record->sysname, "Darwin");
  fill(record->nodename, "iPhone");
  fill(record->release, "16.5.0");
  fill(record->version, "Darwin Kernel");
  fill(record->machine, device.machine());
  return 0;
}

}  // namespace ios
