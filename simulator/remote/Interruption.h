#pragma once

namespace simulator {

/// Ctrl-C, and the other ways of asking a process to end, as something to wait for beside a socket. One per process,
/// from its first use on; a second signal of the same kind ends the process at once.
class Interruption {
 public:
  static Interruption& ofProcess();
  /// Can be read from once there was one.
  int descriptor() const { return event_; }
  bool isRaised() const;
  /// Forgets it: the next one is another.
  void clear();

 private:
  Interruption();
  int event_;
};

/// Thrown where something is waited for when the process is asked to end.
struct Interrupted {};

}  // namespace simulator
