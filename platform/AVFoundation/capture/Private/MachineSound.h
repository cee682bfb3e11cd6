#pragma once

#include <memory>
#include <string>

#include "AVFoundation/Microphone.h"

namespace ios {

/// Whether this machine has a sound server to listen to (PulseAudio, or PipeWire in its place) and time is
/// real.
bool machineHasSoundInput();
/// Begins to listen to the machine's default sound input, in the device's format. Null, with `problem` set,
/// when that cannot be had.
std::unique_ptr<MicrophoneSource> openMachineSoundInput(std::string& problem);

}  // namespace ios
