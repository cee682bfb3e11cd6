#pragma once

#include <memory>
#include <string>

#include "AVFoundation/Microphone.h"
#include "Base/Result.h"

namespace ios {

/// Whether this machine has a sound server to listen to (PulseAudio, or PipeWire in its place) and
/// time is real.
bool machineHasSoundInput();
/// Begins to listen to the machine's default sound input, in the device's format. Fails, saying why,
/// when it is not available.
Result<std::unique_ptr<MicrophoneSource>, std::string> openMachineSoundInput();

}  // namespace ios
