#pragma once

#include "CoreFoundation/PropertyList.h"
#include "CoreGraphics/CGGeometry.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// The attributes of the recorder's pixel buffers: BGRA, `pixels` large, each row exactly its pixels long.
NSDictionary pixelBufferAttributes(CGSize pixels);

/// The movie's picture track: H.264 of that size, with an average of `bitRate` bits per second and no
/// other settings.
NSDictionary videoOutputSettings(CGSize pixels, double bitRate);

}  // namespace tellvane
