#include "Tellvane/Tellvane.h"

#include "Tellvane/TLVManager.h"
#include "info/TLVConstants.h"
#include "triggers/UIWindow+Shake.h"

namespace tellvane {

// Selectors belong to instances here, so these stand for the class operations of the same names.
static void instantiate(Tellvane&, bool debugMode, bool microphoneEnabled) {
  Tellvane::instantiateSDK(debugMode, microphoneEnabled);
}
static std::string version(Tellvane&) {
  return Tellvane::getTLVSDKVersion();
}

MethodList Tellvane::methods() {
  return {{"instantiateSDK:microphoneEnabled:", &instantiate}, {"getTLVSDKVersion", &version}};
}

void Tellvane::instantiateSDK(bool debugMode, bool microphoneEnabled) {
  keepShakeExtension();
  TLVManager::shared()->instantiateSDK(debugMode, microphoneEnabled);
}

void Tellvane::instantiateSDK(bool microphoneEnabled) {
  instantiateSDK(false, microphoneEnabled);
}

std::string Tellvane::getTLVSDKVersion() {
  return TLV_SDK_VERSION();
}

}  // namespace tellvane
