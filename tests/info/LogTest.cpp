#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "Tellvane/TLVManager.h"
#include "info/printTLV.h"
#include "support/TestPhone.h"

using namespace tellvane;
using testing_support::Console;

namespace {
/// An item that says when it is turned into text.
struct Watched {
  int* conversions;
};
std::string logText(const Watched& watched) {
  ++*watched.conversions;
  return "watched";
}
}  // namespace

TEST(Log, JoinsTheItemsBehindThePrefix) {
  Console console;
  printTLV();
  printTLV("one item");
  printTLV(LogLayout{.separator = "-"}, "a", 1);
  printTLV("numbers", 1.0, 0.1, true, std::size_t{7});
  printTLV(100000.0, -1e21, 1e-7, 0.1f);
  const int target = 0;
  const int* const pointers[] = {nullptr, &target};
  printTLV(pointers[0], static_cast<const char*>(nullptr), logText(pointers[1]).substr(0, 2));
  printTLV("error : ", std::shared_ptr<NSError>());
  printTLV(std::optional<std::string>("x"));
  printTLV(LogLayout{.terminator = ""}, "no end");
  EXPECT_EQ(
      "<TLV Log> : \n"
      "<TLV Log> : one item\n"
      "<TLV Log> : a-1\n"
      "<TLV Log> : numbers 1.0 0.1 true 7\n"
      "<TLV Log> : 100000.0 -1000000000000000000000.0 0.0000001 0.1\n"
      "<TLV Log> : nil nil 0x\n"
      "<TLV Log> : error :  nil\n"
      "<TLV Log> : Optional(x)\n"
      "<TLV Log> : no end",
      console.text());
}

TEST(Log, IsSilentInProductionModeAndDoesNotEvenConvertItsItems) {
  Console console;
  int conversions = 0;
  TLVManager::shared()->setIsDebugMode(false);
  printTLV(Watched{&conversions});
  EXPECT_EQ("", console.text());
  EXPECT_EQ(0, conversions);
  TLVManager::shared()->setIsDebugMode(true);
  printTLV(Watched{&conversions});
  EXPECT_EQ("<TLV Log> : watched\n", console.text());
}

// Lines of several threads must not mix, which only a single write can promise.
TEST(Log, WritesEachLineInOneOperation) {
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe2(ends.data(), O_DIRECT)) << "a pipe that keeps writes apart";
  const int original = dup(STDOUT_FILENO);
  std::fflush(stdout);
  dup2(ends[1], STDOUT_FILENO);
  printTLV("first", "line");
  printTLV(std::string(3000, 'x'));
  dup2(original, STDOUT_FILENO);
  close(original);
  std::array<char, 4096> packet{};
  EXPECT_EQ(
      "<TLV Log> : first line\n",
      std::string(packet.data(), static_cast<std::size_t>(read(ends[0], packet.data(), packet.size()))));
  EXPECT_EQ(static_cast<ssize_t>(3000 + 13), read(ends[0], packet.data(), packet.size()));
  close(ends[0]);
  close(ends[1]);
}
