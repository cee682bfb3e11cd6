#pragma once

#include <vector>

#include "CoreMedia/CMTime.h"
#include "Platform.h"

namespace tellvane {

/// Frame rates that the recorder keeps to: the display refreshes 60 times a second.
long usableFrameRate(long framesPerSecond);
/// Display refreshes from one tick to the next, cut to a whole number: 30 frames a second give 2, 45 give 1.
long displayLinkInterval(long framesPerSecond);

/// Seconds of movie before a frame that was displayed at `timestamp`: the time since `firstTimeStamp`, less
/// every pause. `pauseResumeTimes` alternates pauses and resumes; once it is not empty, one frame period is
/// added (once, however many pauses there were), so that the first frame after a pause follows the last one
/// before it.
double elapsedTime(double timestamp, double firstTimeStamp, const std::vector<double>& pauseResumeTimes,
                   long framesPerSecond);

/// `elapsed` seconds after `origin`, in whole milliseconds.
CMTime presentationTime(const CMTime& origin, double elapsed);

}  // namespace tellvane
