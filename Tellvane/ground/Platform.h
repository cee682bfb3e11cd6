#pragma once

namespace ios {}

/// The library. The platform's names are used as they are.
namespace tellvane {
using namespace ios;
}

/// Marks what a shared build of the library shows to its host; everything else stays inside.
#define TLV_EXPORT __attribute__((visibility("default")))
