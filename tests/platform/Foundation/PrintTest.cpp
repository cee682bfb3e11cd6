#include "Foundation/Print.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <map>
#include <sstream>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "support/Process.h"

namespace {

using namespace ios;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using testing_support::outputOf;

TEST(Print, LinesOfSeveralThreadsStayWholeAndBehindWhatWasBuffered) {
  Clock::shared().useVirtualTime();
  CaptureStdout();
  std::fputs("buffered before, ", stdout);
  print("printed\n");
  for (char letter = 'a'; letter < 'e'; ++letter) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), [letter] {
      // Longer than any buffer on the way.
      for (int i = 0; i < 50; ++i) print(std::string(9000, letter) + "\n");
    });
  }
  Clock::shared().runUntilRest();
  std::istringstream lines(GetCapturedStdout());
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "buffered before, printed");
  std::map<std::string, int> counts;
  while (std::getline(lines, line)) ++counts[line];
  ASSERT_EQ(counts.size(), 4u) << "lines are mixed";
  for (const auto& [text, count] : counts) EXPECT_EQ(count, 50) << text[0];
}

TEST(Print, WithoutAReaderTheProcessGoesOn) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  const int output = dup(STDOUT_FILENO), errors = dup(STDERR_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  dup2(ends[1], STDERR_FILENO);
  std::fputs("buffered before, ", stdout);
  print("printed\n");
  NSLog("said");
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  // The process is there, and what it does about the signal is what it was.
  sigset_t signals;
  sigpending(&signals);
  EXPECT_EQ(sigismember(&signals, SIGPIPE), 0);
  pthread_sigmask(SIG_BLOCK, nullptr, &signals);
  EXPECT_EQ(sigismember(&signals, SIGPIPE), 0);
}

TEST(UserDefaults, TheArgumentDomainIsTheCommandLine) {
  EXPECT_EQ(outputOf(PRINT_ARGUMENTS " -debug YES -level -3 -name 'Anna B' -off NO stray -last"),
            "debug=YES yes\nlevel=-3 yes\nname=Anna B no\nlast=(none) no\noff=NO no\n");
}

}  // namespace
