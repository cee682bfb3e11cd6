#pragma once

#include <string>

#include "simulator/flow/Command.h"

namespace simulator {

/// Makes a movie of what the phone shows while a flow is played.
class ScreenRecorder {
 public:
  virtual ~ScreenRecorder() = default;
  /// From now on; the movie's name is without its ending.
  virtual Problem begin(const std::string& name) = 0;
  /// Completes the movie and keeps it.
  virtual Problem end() = 0;
};

}  // namespace simulator
