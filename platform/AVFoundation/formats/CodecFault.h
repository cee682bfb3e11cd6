#pragma once

#include <functional>
#include <string>

namespace ios {

/// Tests replace the codecs' health here: asked before every call into one ("open the video encoder", "encode
/// a picture", "flush the video encoder", "open the audio encoder", "encode sound", "flush the audio
/// encoder", "convert sound", "start the movie file", "write to the movie", "complete the movie file"); a
/// non-zero errno makes it fail so. Empty again: healthy codecs. Asked on the thread that encodes.
///
/// The process's environment may choose the first, IOS_CODEC_FAULT: "encode a picture:40" lets forty calls of
/// that operation succeed, and no later one.
void setCodecFault(std::function<int(const std::string& operation)> fault);

}  // namespace ios
