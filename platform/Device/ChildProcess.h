#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Base/FileDescriptor.h"

namespace ios {

/// A process that this one has started; destroying the object ends it. Used by one thread at a time.
class ChildProcess {
 public:
  struct Plan {
    std::filesystem::path executable;
    std::vector<std::string> arguments;    // without the executable's name
    std::vector<std::string> environment;  // "NAME=value"
    /// Descriptors of this process, each with its number in the new one. Standard input is empty and standard
    /// output goes where standard error goes, unless they are among these; nothing else is inherited.
    std::vector<std::pair<int, int>> descriptors = {};
    /// A process group of its own: signals from the terminal reach this process only, which passes them on.
    bool ownGroup = false;
  };

  struct Ending {
    bool signalled = false;
    int code = 0;  // the exit status, or the signal
    bool isClean() const { return !signalled && code == 0; }
    /// "ended with exit status 3", "ended by signal 11 (Segmentation fault)"
    std::string description() const;
  };

  /// Empty when the system refuses; `problem` says why.
  static std::unique_ptr<ChildProcess> start(const Plan& plan, std::string& problem);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;

  /// A descriptor that can be read from once the process has ended.
  int handle() const { return handle_.number(); }
  /// Waits for the end; after `limit`, empty.
  std::optional<Ending> waitFor(std::chrono::milliseconds limit);
  void kill();
  /// Waits for the end, however long it takes.
  Ending wait();

 private:
  ChildProcess(pid_t process, FileDescriptor handle) : process_(process), handle_(std::move(handle)) {}

  pid_t process_;
  FileDescriptor handle_;
  std::optional<Ending> ending_;
};

}  // namespace ios
