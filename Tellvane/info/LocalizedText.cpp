#include "info/LocalizedText.h"

#include "info/TLVConstants.h"

namespace tellvane {

std::string localizedText(const std::string& key) {
  return NSLocalizedString(key, "TLVLocalizable", TLV_BUNDLE(), "");
}

}  // namespace tellvane
