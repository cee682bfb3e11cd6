#pragma once

#include <functional>
#include <string>

namespace ios {

/// Tests inject codec failures here: called before every call into a codec ("open the video encoder", "encode
/// a picture", "flush the video encoder", "open the audio encoder", "encode sound", "flush the audio
/// encoder", "convert sound", "start the movie file", "write to the movie", "complete the movie file"); a
/// non-zero errno makes that call fail with it. Empty: no failures. Called on the thread that encodes.
///
/// The process's environment may set the initial one, IOS_CODEC_FAULT: "encode a picture:40" lets forty calls of
/// that operation succeed, and no later one.
void setCodecFault(std::function<int(const std::string& operation)> fault);

}  // namespace ios
