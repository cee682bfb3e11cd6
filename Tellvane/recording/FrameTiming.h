#pragma once

#include <vector>

#include "CoreMedia/CMTime.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// `framesPerSecond`, limited to what is possible: 1 to 60, as the display refreshes 60 times per second.
long usableFrameRate(long framesPerSecond);
/// Display refreshes per tick, cut to a whole number: 30 frames per second give 2, 45 give 1.
long displayLinkInterval(long framesPerSecond);

/// Seconds of movie before a frame that was displayed at `timestamp`: the time since `firstTimeStamp`,
/// less every pause. `pauseResumeTimes` alternates pauses and resumes; once it is not empty, one frame
/// period is added (once, however many pauses there were), so that the first frame after a pause follows
/// the last one before it.
double elapsedTime(double timestamp, double firstTimeStamp, const std::vector<double>& pauseResumeTimes,
                   long framesPerSecond);

/// `elapsed` seconds after `origin`, in whole milliseconds.
CMTime presentationTime(const CMTime& origin, double elapsed);

}  // namespace tellvane
