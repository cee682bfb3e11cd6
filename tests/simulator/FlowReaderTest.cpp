#include <gtest/gtest.h>
#include <filesystem>

#include "simulator/flow/Flow.h"
#include "simulator/phone/TextPattern.h"
#include "support/ScratchFolder.h"

namespace {

using namespace simulator;
using testing_support::ScratchFolder;

class FlowReader : public testing::Test {
 protected:
  /// The complaint about a flow, its folder left out; empty when it was read.
  std::string complaint(const std::string& text) const {
    std::string problem;
    if (readFlow(folder_.write("f.yaml", text), problem)) return "";
    const std::string prefix = folder_.path().string() + "/";
    for (std::size_t at; (at = problem.find(prefix)) != std::string::npos;) problem.erase(at, prefix.size());
    return problem;
  }

  ScratchFolder folder_;
};

TEST_F(FlowReader, SaysWhereAFlowIsWrongAndWhatWasExpected) {
  const std::string head = "appId: a.b\n---\n";  // commands start on line 3
  const struct {
    const char* fault;
    std::string text, complaint;
  } kCases[] = {
      {"no YAML", "appId: a.b\n---\n- tapOn: {point: \"1,1\"\n- shake\n",
       "f.yaml:4: this is not valid YAML: "},
      {"no header", "- shake\n", "f.yaml:1: expected a header with appId"},
      {"no commands", "appId: a.b\n---\n[]\n", "f.yaml:3: there are no commands"},
      {"no appId", "name: x\n---\n- shake\n", "f.yaml:1: the header needs an appId"},
      {"unknown key in the header", "appId: a.b\ntags: x\n---\n- shake\n",
       "f.yaml:2: no key is called \"tags\""},
      {"unknown command", head + "- shake\n- tapTwice: x\n",
       "f.yaml:4: no command is called \"tapTwice\"; known: "},
      {"two commands in one item", head + "- shake:\n  tapOn: x\n",
       "f.yaml:3: expected one command per item"},
      {"unknown key of a command", head + "- tapOn:\n    text: x\n    id: y\n",
       "f.yaml:5: tapOn: no key is called \"id\"; known: text, point, repeat, delay, hold, fingers"},
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
      {"fingers that go back in time",
       head + "- touch:\n    - [9, 1, down, \"1,2\"]\n    - [8, 1, up, \"1,2\"]\n",
       "f.yaml:5: touch: expected a time that is not before"},
      {"what no finger does", head + "- touch:\n    - [0, 1, hover, \"1,2\"]\n", "expected down, move, up"},
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
      {"an identifier that is a path", head + "- launchApp: {appId: /etc, clearState: true}\n",
       "f.yaml:3: launchApp: expected a bundle identifier such as \"com.example.notes\", not \"/etc\""},
      {"one that climbs", head + "- shake\n- uninstallApp: ..\n",
       "f.yaml:4: uninstallApp: expected a bundle"},
      {"one in the header", "appId: ../x\n---\n- launchApp\n", "f.yaml:1: expected a bundle identifier"},
      {"others", head + "- setPermissions: {appId: a/b, permissions: {all: deny}}\n", "expected a bundle"},
      {"an unknown sound", head + "- launchApp: {sound: bogus}\n",
       "f.yaml:3: launchApp: expected silence, tone:440, file:PATH, absent or machine, not \"bogus\""},
      {"a sound that is too high", head + "- launchApp: {sound: \"tone:99999\"}\n", "expected silence, tone"},
      {"a sound file that is gone", head + "- launchApp: {sound: \"file:gone.wav\"}\n",
       "f.yaml:3: launchApp: there is no sound file gone.wav"},
      {"an open quote at the end", head + "- shake\n- tapOn: \"Save", "f.yaml:4: this is not valid YAML: "},
      {"text that is not UTF-8", head + "- shake\n- tapOn: Caf\xE9\n", "f.yaml:4: this is not text in UTF-8"},
      {"an expression that is too large", head + "- tapOn: \"x{2000}\"\n", "f.yaml:3: tapOn: this cannot be"},
      {"an expression that is too long", head + "- tapOn: \"" + std::string(20'000, '(') + "\"\n",
       "f.yaml:3: tapOn: expected a text of at most 4096 bytes"},
      {"an expression that looks ahead", head + "- tapOn: \"(?=a)b\"\n", "f.yaml:3: tapOn: this cannot be"},
      {"a flow that runs itself", head + "- runFlow: f.yaml\n", "f.yaml:3: runFlow: the flow runs itself"},
  };
  for (const auto& c : kCases) {
    EXPECT_NE(complaint(c.text).find(c.complaint), std::string::npos) << c.fault << ": " << complaint(c.text);
  }
  std::string problem;
  EXPECT_FALSE(readFlow(folder_.path(), problem));
  EXPECT_NE(problem.find("this is a folder, not a flow"), std::string::npos) << problem;
}

TEST_F(FlowReader, SaysWhichFileASlipOfAnInnerFlowIsIn) {
  folder_.write("inner.yaml", std::string("appId: a.b\n---\n- shake\n- hop\n"));
  EXPECT_EQ(complaint("appId: a.b\n---\n- runFlow: inner.yaml\n").substr(0, 40),
            "inner.yaml:4: no command is called \"hop\"");
}

TEST_F(FlowReader, ReadsWhatAFlowSays) {
  const struct {
    const char *written, *description;
  } kCases[] = {
      {"launchApp", "start a.b"},
      {"launchApp: c.d", "start c.d"},
      // The permission that is named goes before "all".
      {"launchApp: {clearState: true, permissions: {all: deny, photos: allow}, arguments: {debug: true, "
       "name: \"${WHO} "
       "L.\"}}",
       "start a.b with debug true and name Ada L., microphone denied, photos allowed and screen denied, its "
       "data cleared"},
      {"launchApp: {stopApp: false}", "bring to the front a.b"},
      {"tapOn: {point: \"160, 50%\", repeat: 3, delay: 20, fingers: 2}",
       "tap three times with two fingers at 160,50%"},
      {"tapOn: ${WHO}", "tap on “Ada”"},
      {"tapOn: \"a: 'b\"", "tap on “a: 'b”"},
      {"assertNotVisible: {text: Hello}", "“Hello” is not on the screen"},
      {"extendedWaitUntil: {notVisible: x, timeout: 100}", "“x” is not on the screen within 0.1 s"},
      {"swipe: {start: \"1,2\", end: \"3,4\", duration: 10}", "swipe from 1,2 to 3,4"},
      {"swipe: {direction: UP}", "swipe from 50%,60% to 50%,15%"},
      {"setOrientation: LANDSCAPE_LEFT", "turn the phone to landscape left"},
      {"setPermissions: {appId: c.d, permissions: {all: unset}}",
       "set permissions of c.d: microphone not asked yet, photos not asked yet and screen not asked yet"},
      {"assertPasteboard: [b, a]", "the pasteboard holds one item of a and b"},
      {"wait: 1.5", "wait for 1.5 seconds"},
  };
  for (const auto& c : kCases) {
    std::string problem;
    const auto flow = readFlow(
        folder_.write("f.yaml", "appId: a.b\nenv: {WHO: Ada}\n---\n- shake\n- " + std::string(c.written)),
        problem);
    ASSERT_TRUE(flow) << problem;
    ASSERT_EQ(flow->steps.size(), 2u) << c.written;
    EXPECT_EQ(flow->steps[1].command->description(), c.description);
    EXPECT_EQ(flow->steps[1].line, 5);
  }

  std::string problem;
  const auto flow = readFlow(
      folder_.write("g.yaml",
                    std::string("appId: a.b\n---\n- repeat: {times: 2, commands: [shake, {tapOn: x}]}\n")),
      problem);
  ASSERT_TRUE(flow) << problem;
  const Command& repeat = *flow->steps[0].command;
  EXPECT_EQ(repeat.times(), 2);
  ASSERT_EQ(repeat.steps()->size(), 2u);
  EXPECT_EQ(repeat.steps()->at(1).command->description(), "tap on “x”");
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
  // A matcher that tries every way to match would overflow its stack at the first, and never come
  // back from the second.
  EXPECT_FALSE(TextPattern("(a|b)*c").matches(std::string(1'000'000, 'a')));
  EXPECT_FALSE(TextPattern("(.*)*x").matches(std::string(200, 'a')));
}

}  // namespace
