#pragma once

#include <stdexcept>
#include <string>

namespace simulator {

/// What the process ends with: the numbers of sysexits.h where it has one.
enum class Exit : int {
  done = 0,
  failed = 1,         // a flow's step, an application
  usage = 64,         // the command line
  refused = 65,       // the phone does not do it, or the input makes no sense
  noInput = 66,       // a file is not there
  noDevice = 68,      // no such device, or it is not booted
  unavailable = 69,   // the phone has nothing of the kind
  software = 70,      // a fault of this program
  system = 71,        // the system refuses
  cannotCreate = 73,  // an output file
  inputOutput = 74,   // reading or writing failed
  protocol = 76,      // the phone ended, or said something else than expected
  noPermission = 77,  // somebody else's phone
  interrupted = 130,  // as shells have it: 128 and the signal
};

/// Why a command ends without having done its work, in words for a person that say what to do next.
class Refusal : public std::runtime_error {
 public:
  Refusal(Exit status, const std::string& words) : std::runtime_error(words), status_(status) {}
  Exit status() const { return status_; }

 private:
  Exit status_;
};

}  // namespace simulator
