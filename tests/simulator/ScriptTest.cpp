#include <gtest/gtest.h>

#include "simulator/script/Script.h"

namespace {

using simulator::Script;
using simulator::ScriptProblem;

TEST(Script, EvaluatesWithinItsBounds) {
  Script script(7);
  script.setVariables({{"NAME", "Ada"}, {"COUNT", "2"}});
  script.setCopiedText("copied");
  const struct {
    const char *expression, *value, *problem = "";
  } kCases[] = {
      {"1 + 1", "2"},
      {"NAME + ' ' + (Number(COUNT) + 1)", "Ada 3"},
      {"maestro.platform + maestro.copiedText", "ioscopied"},
      {"new Date(2026, 0, 5).toISOString()", "2026-01-05T00:00:00.000Z"},  // whatever the machine's zone
      {"output.nothing", "undefined"},
      {"NOBODY", "", "ReferenceError"},
      {"{a: 1}.a }", "", "SyntaxError"},
      {"(function () { while (true) {} })()", "", "it does not end"},
      {"(function () { try { while (true) {} } catch (e) { return 1; } })()", "", "it does not end"},
      {"(function f() { return 1 + f(); })()", "", "RangeError"},
      {"(function () { var a = 'x'; while (true) a += a; })()", "", "alloc failed"},
      {"/(a+)+$/.test(new Array(40).join('a') + 'b')", "", "RangeError"},
      {"http.get('http://localhost')", "", "scripts cannot use http"},
      {"typeof require + typeof XMLHttpRequest + typeof setTimeout", "undefinedundefinedundefined"},
      {"1 + 2", "3"},  // and it goes on after all that
  };
  for (const auto& c : kCases) {
    ScriptProblem problem;
    EXPECT_EQ(script.evaluate(c.expression, problem), c.value) << c.expression << ": " << problem.what;
    EXPECT_EQ(!problem.what.empty(), *c.problem != 0) << c.expression << ": " << problem.what;
    EXPECT_NE(problem.what.find(c.problem), std::string::npos) << c.expression << ": " << problem.what;
  }
}

TEST(Script, SharesOutputAndNothingElse) {
  std::vector<std::string> said;
  Script script(7, [&](const std::string& line) { said.push_back(line); });
  EXPECT_EQ(
      script.run("var mine = 3;\noutput.total = mine + 1; console.log('total', {t: output.total});").what,
      "");
  EXPECT_EQ(said, std::vector<std::string>{"total {\"t\":4}"});
  ScriptProblem problem;
  EXPECT_EQ(script.evaluate("output.total + typeof mine", problem), "4undefined");
  script.setVariables({{"A", "1"}});
  script.setVariables({{"B", "2"}});
  EXPECT_EQ(script.evaluate("typeof A + B", problem), "undefined2");

  // The same seed throws the same dice; another one others.
  Script again(7), other(8);
  const std::string thrown = script.evaluate("Math.random()", problem);
  EXPECT_EQ(again.evaluate("Math.random()", problem), thrown);
  EXPECT_NE(other.evaluate("Math.random()", problem), thrown);
}

TEST(Script, SaysOnWhichLineItFails) {
  Script script;
  EXPECT_EQ(script.run("var a = 1;\nvar b = 2;\nnobody();\n").line, 3);
  const ScriptProblem slip = Script::scriptSyntaxProblem("var a = 1;\nlet f = () => `x`;\n");
  EXPECT_EQ(slip.line, 2) << slip.what;
  EXPECT_NE(slip.what.find("ECMAScript 5"), std::string::npos) << slip.what;
  EXPECT_FALSE(Script::scriptSyntaxProblem("if (output.x) { output.y = 1; }\nreturn;"));
  EXPECT_TRUE(Script::knows("output"));
  EXPECT_FALSE(Script::knows("NOBODY"));
}

}  // namespace
