#include "ground/Switches.h"

#include <atomic>

namespace tellvane {
namespace {

std::atomic<bool> debugModeIsOn = true;
std::atomic<bool> microphoneIsEnabled = false;

}  // namespace

bool debugMode() {
  return debugModeIsOn;
}

void setDebugMode(bool on) {
  debugModeIsOn = on;
}

bool microphoneEnabled() {
  return microphoneIsEnabled;
}

void setMicrophoneEnabled(bool on) {
  microphoneIsEnabled = on;
}

}  // namespace tellvane
