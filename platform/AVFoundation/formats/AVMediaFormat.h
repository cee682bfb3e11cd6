#pragma once

#include <string>

namespace ios {

using AVMediaType = std::string;
inline const AVMediaType AVMediaTypeVideo = "vide";
inline const AVMediaType AVMediaTypeAudio = "soun";

using AVFileType = std::string;
inline const AVFileType AVFileTypeQuickTimeMovie = "com.apple.quicktime-movie";
inline const AVFileType AVFileTypeMPEG4 = "public.mpeg-4";

}  // namespace ios
