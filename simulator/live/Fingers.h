#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "Device/Input.h"
#include "simulator/live/CommandInbox.h"

namespace simulator {

/// The fingers that viewers have on the glass. Each viewer counts its own from 0; on the device each is another
/// one, with a number below zero, which no finger of a flow has. Main thread.
class Fingers {
 public:
  /// The viewer's changes as the device has them. A finger that is not down can only come down.
  std::vector<ios::TouchSample> placed(ViewerId viewer, std::vector<ios::TouchSample> samples);
  /// Cancels all of a viewer's.
  std::vector<ios::TouchSample> lifted(ViewerId viewer);
  /// Cancels everybody's.
  std::vector<ios::TouchSample> allLifted();

 private:
  std::map<ViewerId, std::map<std::int64_t, ios::TouchSample>> down_;  // by the viewer's own number
};

}  // namespace simulator
