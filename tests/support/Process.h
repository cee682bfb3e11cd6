#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace testing_support {

/// The result of a command.
struct Outcome {
  int status = -1;  // exit status, or 128 + the signal
  std::string output;
  bool says(const std::string& text) const { return output.find(text) != std::string::npos; }
};

/// Runs a command line with the shell; its standard output, and standard error if the line
/// sends it there ("2>&1").
inline Outcome run(const std::string& command) {
  Outcome outcome;
  FILE* pipe = ::popen(command.c_str(), "re");
  if (!pipe) {
    ADD_FAILURE() << "could not run " << command;
    return outcome;
  }
  std::array<char, 65536> piece{};
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), pipe))
    outcome.output.append(piece.data(), count);
  const int status = ::pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return outcome;
}

/// A command's standard output; fails the test if it could not be run or did not exit with 0.
inline std::string outputOf(const std::string& command) {
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, 0) << command << "\n" << outcome.output;
  return outcome.output;
}

}  // namespace testing_support
