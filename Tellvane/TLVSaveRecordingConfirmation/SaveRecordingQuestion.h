#pragma once

#include <string>
#include <vector>

#include "Foundation/NSAttributedString.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// What the confirmation screen asks, and which parts of it stand out. The parts may touch or overlap.
struct SaveRecordingQuestion {
  std::string text;
  std::vector<NSRange> emphasised;
};

/// Each name is emphasised where it first occurs in the whole question; for an application named "video" that is not at
/// its end. An empty name is not emphasised.
SaveRecordingQuestion saveRecordingQuestion(const std::string& album, const std::string& application);

}  // namespace tellvane
