#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Base/FileDescriptor.h"

namespace simulator {

/// A program that this one has started. It is left alone when the object goes. What the system refuses is thrown as a
/// Refusal.
class Process {
 public:
  struct Plan {
    std::vector<std::string> words;  // the program's path, and its arguments
    std::string output;              // a new file for standard output and standard error
    int ready = -1;                  // a descriptor that becomes its number 3
    bool ownSession = false;         // it outlives this program and its terminal
  };
  static Process start(Plan plan);

  /// Can be read from once it has ended.
  int handle() const { return handle_.number(); }
  void signal(int number) const;
  /// Waits for the end: the exit status, or 128 and the signal.
  int wait() const;

 private:
  Process(pid_t process, ios::FileDescriptor handle) : process_(process), handle_(std::move(handle)) {}
  pid_t process_;
  ios::FileDescriptor handle_;
};

}  // namespace simulator
