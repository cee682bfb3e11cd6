#include "front/ScreenName.h"

namespace tellvane {

std::string screenName(std::string classDescription, const std::string& bundleName) {
  const std::string module = bundleName + ".";
  for (auto at = classDescription.find(module); at != std::string::npos;
       at = classDescription.find(module, at)) {
    classDescription.erase(at, module.size());
  }
  return classDescription;
}

}  // namespace tellvane
