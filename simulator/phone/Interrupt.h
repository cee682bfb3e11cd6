#pragma once

#include "Base/FileDescriptor.h"

namespace simulator {

/// Ends whatever is waited for, from another thread or from a signal's handler. Stays raised.
class Interrupt {
 public:
  Interrupt();
  /// Any thread, and in a signal's handler.
  void raise() const;
  bool isRaised() const;
  /// Can be read from once it is raised.
  int descriptor() const { return event_.number(); }

 private:
  ios::FileDescriptor event_;
};

}  // namespace simulator
