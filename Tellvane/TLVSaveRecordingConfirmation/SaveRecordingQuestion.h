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

/// The names stand out where they occur first in the whole question, which for an application named "video"
/// is not at its end. An empty name does not stand out.
SaveRecordingQuestion saveRecordingQuestion(const std::string& album, const std::string& application);

}  // namespace tellvane
