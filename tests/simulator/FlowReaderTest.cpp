#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "simulator/Flow.h"

namespace {

namespace fs = std::filesystem;
using namespace simulator;

class FlowReader : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() / ("flows-" + std::to_string(::getpid()));
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  fs::path write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
    return folder_ / name;
  }
  /// The complaint about a flow, its folder left out; empty when it was read.
  std::string complaint(const std::string& text) const {
    std::string problem;
    if (readFlow(write("f.yaml", text), problem)) return "";
    const std::string prefix = folder_.string() + "/";
    for (std::size_t at; (at = problem.find(prefix)) != std::string::npos;) problem.erase(at, prefix.size());
    return problem;
  }
  std::vector<Command> commands(const std::string& list) const {
    std::string problem;
    auto flow = readFlow(write("f.yaml", "appId: a.b\nenv: {WHO: Ada}\n---\n" + list), problem);
    EXPECT_TRUE(flow) << problem;
    return flow ? flow->commands : std::vector<Command>{};
  }

  fs::path folder_;
};

TEST_F(FlowReader, SaysWhereAFlowIsWrongAndWhatWasExpected) {
  const std::string head = "appId: a.b\n---\n";  // commands start on line 3
  const struct {
    const char* fault;
    std::string text, complaint;
  } kCases[] = {
      {"no YAML", "appId: a.b\n---\n- tapOn: {point: \"1,1\"\n- shake\n", "f.yaml:4: this is no YAML: "},
      {"no header", "- shake\n", "f.yaml:1: expected a header with appId"},
      {"no commands", "appId: a.b\n---\n[]\n", "f.yaml:3: there are no commands"},
      {"no appId", "name: x\n---\n- shake\n", "f.yaml:1: the header needs an appId"},
      {"unknown key in the header", "appId: a.b\ntags: x\n---\n- shake\n",
       "f.yaml:2: no key is called \"tags\""},
      {"unknown command", head + "- shake\n- tapTwice: x\n",
       "f.yaml:4: no command is called \"tapTwice\"; known: "},
      {"two commands in one item", head + "- shake:\n  tapOn: x\n", "f.yaml:3: expected one command an item"},
      {"unknown key of a command", head + "- tapOn:\n    text: x\n    id: y\n",
       "f.yaml:5: tapOn: no key is called \"id\"; known: text, point, repeat, delay, fingers"},
      {"a key twice", head + "- tapOn:\n    text: x\n    text: y\n", "f.yaml:5: tapOn: \"text\" comes twice"},
      {"neither text nor point", head + "- tapOn:\n    repeat: 3\n", "needs either \"text\" or \"point\""},
      {"both text and point", head + "- tapOn: {text: x, point: \"1,1\"}\n",
       "needs either \"text\" or \"point\""},
      {"a place beyond the screen", head + "- tapOn: {point: \"50%,101%\"}\n", "expected a place such as"},
      {"a place without a comma", head + "- tapOn: {point: \"50%\"}\n", "expected a place such as"},
      {"no fingers", head + "- tapOn: {text: x, fingers: 0}\n", "expected a number from 1 to 5, not \"0\""},
      {"half a tap", head + "- tapOn: {text: x, repeat: 1.5}\n", "expected a whole number, not \"1.5\""},
      {"not a number", head + "- wait: a while\n",
       "f.yaml:3: wait: expected a number from 0 to 86400, not \"a while\""},
      {"a time that never ends", head + "- wait: inf\n", "expected a number from 0 to 86400"},
      {"backwards", head + "- wait: -1\n", "expected a number from 0 to 86400, not \"-1\""},
      {"a command without its text", head + "- assertVisible\n", "f.yaml:3: assertVisible: expected a text"},
      {"a command with too much", head + "- shake: hard\n", "f.yaml:3: shake: takes no values"},
      {"another key than Home", head + "- pressKey: Power\n", "the phone has no key \"Power\""},
      {"an unknown direction", head + "- swipe: {direction: IN}\n", "expected UP, DOWN, LEFT or RIGHT"},
      {"an unknown orientation", head + "- setOrientation: flat\n", "expected portrait, landscapeLeft"},
      {"an unknown answer", head + "- setPermissions: {photos: maybe}\n", "expected allow, deny or unset"},
      {"an unknown service", head + "- setPermissions:\n    permissions: {camera: deny}\n",
       "no key is called \"camera\""},
      {"a picture elsewhere", head + "- takeScreenshot: ../../x\n", "expected a plain name"},
      {"both ways to wait", head + "- extendedWaitUntil: {visible: a, notVisible: b}\n", "needs either"},
      {"an unknown variable", head + "- tapOn: ${NOBODY}\n", "no value for ${NOBODY}"},
      {"an unfinished variable", head + "- tapOn: \"${WHO\"\n", "\"${\" without \"}\""},
      {"a slip within a repeat",
       head + "- repeat:\n    times: 2\n    commands:\n      - shake\n      - jump\n",
       "f.yaml:7: no command is called \"jump\""},
      {"a flow that is not there", head + "- runFlow: gone.yaml\n",
       "f.yaml:3: runFlow: there is no flow gone.yaml"},
      {"a flow that runs itself", head + "- runFlow: f.yaml\n", "f.yaml:3: runFlow: the flow runs itself"},
  };
  for (const auto& c : kCases) {
    EXPECT_NE(complaint(c.text).find(c.complaint), std::string::npos) << c.fault << ": " << complaint(c.text);
  }
}

TEST_F(FlowReader, SaysWhichFileASlipOfAnInnerFlowIsIn) {
  write("inner.yaml", "appId: a.b\n---\n- shake\n- hop\n");
  EXPECT_EQ(complaint("appId: a.b\n---\n- runFlow: inner.yaml\n").substr(0, 40),
            "inner.yaml:4: no command is called \"hop\"");
}

TEST_F(FlowReader, ReadsWhatAFlowSays) {
  const auto all = commands(R"(
- launchApp
- launchApp:
    clearState: true
    stopApp: false
    permissions: {all: deny, photos: allow}
    arguments: {debug: true, name: "${WHO} L."}
- tapOn: {point: "160, 50%", repeat: 3, delay: 20, fingers: 2}
- assertNotVisible: {text: Hello}
- extendedWaitUntil: {notVisible: x, timeout: 100}
- swipe: {start: "1,2", end: "3,4", duration: 10}
- repeat: {times: 2, commands: [shake, {tapOn: "${WHO}"}]}
- assertPasteboard: [b, a]
)");
  ASSERT_EQ(all.size(), 8u);
  EXPECT_EQ(std::get<LaunchApp>(all[0].action).appId, "a.b");
  EXPECT_TRUE(std::get<LaunchApp>(all[0].action).stopApp);
  const auto& launch = std::get<LaunchApp>(all[1].action);
  EXPECT_TRUE(launch.clearState);
  EXPECT_FALSE(launch.stopApp);
  EXPECT_EQ(launch.permissions.at("photos"), ios::Permission::authorized);  // the one named goes before "all"
  EXPECT_EQ(launch.permissions.at("microphone"), ios::Permission::denied);
  EXPECT_EQ(launch.arguments.at("name"), "Ada L.");
  const auto& tap = std::get<TapOn>(all[2].action);
  EXPECT_EQ(tap.point->on({400, 600}), (ios::CGPoint{160, 300}));
  EXPECT_EQ(describe(all[2]), "tap three times with two fingers at 160,50%");
  EXPECT_FALSE(std::get<AssertVisible>(all[3].action).visible);
  EXPECT_EQ(std::get<AssertVisible>(all[4].action).timeout, 100);
  EXPECT_EQ(std::get<Swipe>(all[5].action).duration, 10);
  const auto& inner = std::get<Repeat>(all[6].action).commands;
  ASSERT_EQ(inner.size(), 2u);
  EXPECT_EQ(std::get<TapOn>(inner[1].action).text->text(), "Ada");
  EXPECT_EQ(std::get<AssertPasteboard>(all[7].action).types, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(all[2].line, 11);
}

TEST(TextPattern, StandsForItselfBeforeItIsAnExpression) {
  const struct {
    const char *pattern, *text;
    bool matches;
  } kCases[] = {
      {"Save (2)", "Save (2)", true},     {"Save (", "Save (", true}, {"Save (", "Save", false},
      {"Notes?", "Note", true},           {"note", "Note", true},     {"Note", "Notes", false},
      {".*TLV.*", "<TLV Log>", true},     {"a.c", "abc", true},       {"", "x", false},
      {"One.*two", "One\nand two", true},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(TextPattern(c.pattern).matches(c.text), c.matches) << c.pattern << " " << c.text;
  // A text that long would overflow the matcher's stack.
  EXPECT_FALSE(TextPattern("(a|b)*c").matches(std::string(1'000'000, 'a')));
}

}  // namespace
