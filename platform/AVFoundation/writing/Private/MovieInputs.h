#pragma once

#include <memory>
#include <string>

#include "AVFoundation/AVAssetWriterInput.h"
#include "AVFoundation/Private/MovieTrack.h"

namespace ios {

/// The track that an input's settings ask for; null when they cannot be met in that container.
std::shared_ptr<MovieTrack> makeTrack(const AVAssetWriterInput& input, const std::string& container);

}  // namespace ios
