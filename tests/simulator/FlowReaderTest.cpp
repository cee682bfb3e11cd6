#include <gtest/gtest.h>
#include <filesystem>

#include "simulator/flow/Flow.h"
#include "simulator/flow/Portability.h"
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
      {"no commands", "appId: a.b\n---\n[]\n", "f.yaml:3:1: there are no commands"},
      {"no appId", "name: x\n---\n- shake\n", "f.yaml:1:1: the header needs an appId"},
      {"tags that are no list", "appId: a.b\ntags: x\n---\n- shake\n", "f.yaml:2:7: expected a list"},
      {"a slip in what comes after it", "appId: a.b\nonFlowComplete:\n  - shak\n---\n- shake\n",
       "f.yaml:3:5: no command is called \"shak\"; did you mean \"shake\"?"},
      {"unknown command", head + "- shake\n- tapTwice: x\n",
       "f.yaml:4:3: no command is called \"tapTwice\"; known: "},
      {"two commands in one item", head + "- shake:\n  tapOn: x\n",
       "f.yaml:3:3: expected one command per item"},
      {"a command for a model", head + "- assertNicelyWithAI: x\n",
       "f.yaml:3:3: \"assertNicelyWithAI\" asks a model"},
      {"unknown key of a command", head + "- tapOn:\n    text: x\n    indx: 1\n",
       "f.yaml:5:11: tapOn: no key is called \"indx\"; did you mean \"index\"?; known: text, id, index, "},
      {"unknown key of a selector within", head + "- tapOn: {text: x, below: {txet: y}}\n",
       "f.yaml:3:34: tapOn: no key is called \"txet\"; did you mean \"text\"?"},
      {"a selector of nothing", head + "- assertVisible: {}\n", "expected at least one of: text, id, index"},
      {"an unknown trait", head + "- assertVisible: {traits: round}\n", "expected text, long-text or square"},
      {"an unknown platform", head + "- runFlow: {when: {platform: Androit}, commands: [shake]}\n",
       "expected iOS, Android or Web, not \"Androit\"; did you mean \"android\"?"},
      {"a condition of nothing", head + "- repeat: {while: {}, commands: [shake]}\n",
       "expected one of: visible"},
      {"a loop without bounds", head + "- repeat: {commands: [shake]}\n", "needs \"times\" or \"while\""},
      {"two ways to play", head + "- retry: {file: a.yaml, commands: [shake]}\n", "needs either \"file\" or"},
      {"an expression with a slip", head + "- tapOn: ${1 +}\n",
       "f.yaml:3:10: tapOn: ${1 +} is not an expression: "},
      {"a script with a slip", head + "- runScript: slip.js\n", "slip.js:2: SyntaxError: "},
      {"a place that is none", head + "- setLocation: {latitude: 91, longitude: 0}\n",
       "a number from -90 to 90"},
      {"a journey that is none", head + "- travel: {points: [\"1\"]}\n",
       "expected a latitude and a longitude"},
      {"a count with an unknown name", head + "- repeat: {times: \"${COUNT}\", commands: [shake]}\n",
       "f.yaml:3:19: repeat: no value for ${COUNT}: neither env nor -e gives one"},
      {"a key twice", head + "- tapOn:\n    text: x\n    text: y\n",
       "f.yaml:5:5: tapOn: \"text\" comes twice"},
      {"neither text nor point", head + "- tapOn:\n    repeat: 3\n", "needs \"point\", or \"text\""},
      {"a place beyond the screen", head + "- tapOn: {point: \"50%,101%\"}\n", "expected a place such as"},
      {"a place without a comma", head + "- tapOn: {point: \"50%\"}\n", "expected a place such as"},
      {"no fingers", head + "- tapOn: {text: x, fingers: 0}\n", "expected a number from 1 to 5, not \"0\""},
      {"half a tap", head + "- tapOn: {text: x, repeat: 1.5}\n", "expected a whole number, not \"1.5\""},
      {"not a number", head + "- wait: a while\n",
       "f.yaml:3:9: wait: expected a number from 0 to 86400, not \"a while\""},
      {"a time that never ends", head + "- wait: inf\n", "expected a number from 0 to 86400"},
      {"backwards", head + "- wait: -1\n", "expected a number from 0 to 86400, not \"-1\""},
      {"a command without its text", head + "- assertVisible\n",
       "f.yaml:3:3: assertVisible: expected a text"},
      {"a command with too much", head + "- shake: hard\n", "f.yaml:3:10: shake: takes no values"},
      {"a key that no phone has", head + "- pressKey: Hom\n", "not \"Hom\"; did you mean \"home\"?"},
      {"an unknown direction", head + "- swipe: {direction: IN}\n", "expected UP, DOWN, LEFT or RIGHT"},
      {"fingers that go back in time",
       head + "- touch:\n    - [9, 1, down, \"1,2\"]\n    - [8, 1, up, \"1,2\"]\n",
       "f.yaml:5:7: touch: expected a time that is not before"},
      {"what no finger does", head + "- touch:\n    - [0, 1, hover, \"1,2\"]\n", "expected down, move, up"},
      {"an unknown orientation", head + "- setOrientation: flat\n", "expected portrait, landscapeLeft"},
      {"an unknown answer", head + "- setPermissions: {photos: maybe}\n", "expected allow, deny or unset"},
      {"a picture elsewhere", head + "- takeScreenshot: ../../x\n", "expected a plain name"},
      {"both ways to wait", head + "- extendedWaitUntil: {visible: a, notVisible: b}\n", "needs either"},
      {"an unknown variable", head + "- tapOn: ${NOBODY}\n",
       "no value for ${NOBODY}: neither env nor -e gives one"},
      {"an unfinished variable", head + "- tapOn: \"${WHO\"\n", "\"${\" without \"}\""},
      {"a slip within a repeat",
       head + "- repeat:\n    times: 2\n    commands:\n      - shake\n      - jump\n",
       "f.yaml:7:9: no command is called \"jump\""},
      {"a flow that is not there", head + "- runFlow: gone.yaml\n",
       "f.yaml:3:12: runFlow: there is no flow gone.yaml"},
      {"an identifier that is a path", head + "- launchApp: {appId: /etc, clearState: true}\n",
       "f.yaml:3:22: launchApp: expected a bundle identifier such as \"com.example.notes\", not \"/etc\""},
      {"one that climbs", head + "- shake\n- uninstallApp: ..\n",
       "f.yaml:4:17: uninstallApp: expected a bundle"},
      {"one in the header", "appId: ../x\n---\n- launchApp\n", "f.yaml:1:8: expected a bundle identifier"},
      {"others", head + "- setPermissions: {appId: a/b, permissions: {all: deny}}\n", "expected a bundle"},
      {"an unknown sound", head + "- launchApp: {sound: bogus}\n",
       "f.yaml:3:22: launchApp: expected silence, tone:440, file:PATH, absent or machine, not \"bogus\""},
      {"a sound that is too high", head + "- launchApp: {sound: \"tone:99999\"}\n", "expected silence, tone"},
      {"a sound file that is gone", head + "- launchApp: {sound: \"file:gone.wav\"}\n",
       "f.yaml:3:22: launchApp: there is no sound file gone.wav"},
      {"an open quote at the end", head + "- shake\n- tapOn: \"Save", "f.yaml:4: this is not valid YAML: "},
      {"text that is not UTF-8", head + "- shake\n- tapOn: Caf\xE9\n", "f.yaml:4: this is not text in UTF-8"},
      {"an expression that is too large", head + "- tapOn: \"x{2000}\"\n",
       "f.yaml:3:10: tapOn: this cannot be"},
      {"an expression that is too long", head + "- tapOn: \"" + std::string(20'000, '(') + "\"\n",
       "f.yaml:3:10: tapOn: expected a text of at most 4096 bytes"},
      {"an expression that looks ahead", head + "- tapOn: \"(?=a)b\"\n",
       "f.yaml:3:10: tapOn: this cannot be"},
      {"a flow that runs itself", head + "- runFlow: f.yaml\n", "f.yaml:3:12: runFlow: the flow runs itself"},
  };
  folder_.write("slip.js", std::string("var a = 1;\nlet b = a;\n"));
  for (const auto& c : kCases) {
    EXPECT_NE(complaint(c.text).find(c.complaint), std::string::npos) << c.fault << ": " << complaint(c.text);
  }
  std::string problem;
  EXPECT_FALSE(readFlow(folder_.path(), problem));
  EXPECT_NE(problem.find("this is a folder, not a flow"), std::string::npos) << problem;
}

TEST_F(FlowReader, SaysWhichFileASlipOfAnInnerFlowIsIn) {
  folder_.write("inner.yaml", std::string("appId: a.b\n---\n- shake\n- hop\n"));
  EXPECT_EQ(complaint("appId: a.b\n---\n- runFlow: inner.yaml\n").substr(0, 42),
            "inner.yaml:4:3: no command is called \"hop\"");
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
      {"tapOn: \\${WHO}", "tap on “${WHO}”"},
      {"tapOn: \"${WHO + '}'}\"", "tap on “${WHO + '}'}”"},  // known only when it is played
      {"tapOn: {id: ok, index: -1, enabled: true, childOf: {text: Box}, point: \"10%,5\", optional: true}",
       "tap on id “ok”, number -1, enabled, in “Box” at 10%,5"},
      {"doubleTapOn: {text: Map, label: zoom}", "tap twice on “Map”"},
      {"longPressOn: Map", "press long on “Map”"},
      {"assertVisible: {width: 20, height: 30, tolerance: 2, traits: [text, square], below: A, leftOf: {id: "
       "b}, "
       "checked: false, containsDescendants: [{text: c}, {text: d}]}",
       "20 wide, 30 high, not checked, with a text, square, below “A”, around “c”, around “d”, left of id "
       "“b” is on "
       "the screen"},
      {"scrollUntilVisible: {element: {text: End}, direction: DOWN, speed: 80, centerElement: true}",
       "scroll until “End” is on the screen"},
      {"swipe: {from: {text: Row}, direction: LEFT}", "swipe left from “Row”"},
      {"back: {label: x}", "press the Back key"},
      {"pressKey: volume up", "press the Volume Up key"},
      {"setPermissions: {camera: deny}", "set permissions of a.b: camera denied"},
      {"setAirplaneMode: enabled", "switch the airplane mode on"},
      {"travel: {points: [\"48.2,16.4\", \"48.3, 16.5\"], speed: 10}", "travel from 48.2,16.4 to 48.3,16.5"},
      {"openLink: {link: \"https://a.example\", browser: true, autoVerify: false}",
       "open https://a.example in the browser"},
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
}

TEST_F(FlowReader, KeepsWhatAHeaderSays) {
  std::string problem;
  const auto flow =
      readFlow(folder_.write("f.yaml", std::string("appId: a.b\nname: F\ntags: [x, y]\njsEngine: old\n"
                                                   "extra: {a: 1}\nonFlowStart: [shake]\n"
                                                   "onFlowComplete: [shake, shake]\n---\n"
                                                   "- repeat: {times: 2, commands: [shake]}\n")),
               problem);
  ASSERT_TRUE(flow) << problem;
  EXPECT_EQ(flow->tags, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(flow->otherKeys, (std::map<std::string, std::string>{{"extra", ""}, {"jsEngine", "old"}}));
  EXPECT_EQ(flow->onStart.size(), 1u);
  EXPECT_EQ(flow->onComplete.size(), 2u);
  EXPECT_EQ(flow->steps[0].command->description(), "repeat twice");
}

TEST_F(FlowReader, NamesWhatOtherToolsWouldNotTake) {
  std::string problem;
  const auto flow = readFlow(
      folder_.write("f.yaml", std::string("appId: a.b\nonFlowComplete: [assertNoLog: x]\n---\n"
                                          "- tapOn: {text: Save, retryTapIfNoChange: true}\n"
                                          "- tapOn: {text: \"Save (\", fingers: 2}\n"
                                          "- repeat: {times: 2, commands: [{runFlow: {commands: [shake]}}]}\n"
                                          "- launchApp: {sound: silence, label: x}\n"
                                          "- pressKey: {key: Home}\n"
                                          "- pressKey: Home\n"
                                          "- evalScript: \"output.a = 1\"\n")),
      problem);
  ASSERT_TRUE(flow) << problem;
  std::string all;
  for (const std::string& each : portabilityProblems(*flow))
    all += each.substr(folder_.path().string().size() + 1) + "\n";
  EXPECT_EQ(all,
            "f.yaml:5: tapOn: only this simulator has the key \"fingers\"\n"
            "f.yaml:5: tapOn: \"Save (\" is not a regular expression; write a \\ before its signs\n"
            "f.yaml:6: shake: only this simulator has this command\n"
            "f.yaml:7: launchApp: only this simulator has the key \"sound\"\n"
            "f.yaml:8: pressKey: write the value by itself, without \"key\"\n"
            "f.yaml:10: evalScript: write the script as ${…}\n"
            "f.yaml:2: assertNoLog: only this simulator has this command\n");
}

// Who is named last in this list has the last word: what the flow says of itself, its caller, the command line.
TEST_F(FlowReader, TakesTextsFromTheCallerFirst) {
  folder_.write("inner.yaml", std::string("appId: a.b\nenv: {A: inner, B: inner, C: inner}\n---\n"
                                          "- assertVisible: ${A} ${B} ${C} ${D}\n"));
  std::string problem;
  const auto flow =
      readFlow(folder_.write("f.yaml", std::string("appId: a.b\nenv: {C: outer, D: outer}\n---\n"
                                                   "- runFlow: {file: inner.yaml, env: {B: caller}}\n")),
               problem, {{"C", "line"}});
  ASSERT_TRUE(flow) << problem;
  const auto parts = flow->steps[0].command->group()->parts();
  EXPECT_EQ(parts[1]->front().command->description(), "“inner caller line outer” is on the screen");
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
