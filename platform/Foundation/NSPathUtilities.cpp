#include "Foundation/NSPathUtilities.h"

#include "Device/Device.h"

namespace ios {

std::string NSHomeDirectory() {
  return Device::current().home().string();
}

}  // namespace ios
