#include <gtest/gtest.h>

#include "Foundation/NSPredicate.h"

namespace ios {
namespace {

TEST(Predicate, HoldsForWhatTheFormatSays) {
  const NSDictionary album{{"title", "Tellvane"}, {"count", 3}, {"length", 2.5}, {"shared", true}};
  const struct {
    const char* format;
    std::vector<PropertyList> arguments;
    bool holds;
  } rows[] = {
      {"title == %@", {"Tellvane"}, true},
      {"title == %@", {"tellvane"}, false},
      {"title == %@", {"Tellvane "}, false},
      {"title == %@", {"Tellva"}, false},
      {"title == %@", {"title"}, false},
      {"%@ == title", {"Tellvane"}, true},
      {"title=%@", {"Tellvane"}, true},
      {"title != %@", {"Tellvane"}, false},
      {"title <> %@", {"Other"}, true},
      {"title == 'Tellvane'", {}, true},
      {R"(title == "Tell\"vane")", {}, false},
      // An argument is a value, whatever it says.
      {"title == %@", {"%@"}, false},
      {"title == %@", {"x' OR title != 'x"}, false},
      {"count == 3", {}, true},
      {"count == 3.0", {}, true},
      {"length == 2.5", {}, true},
      {"count == %@", {"3"}, false},
      {"shared == %@", {true}, true},
      {"shared == %@", {1}, false},
      {"title == %@ AND count == %@", {"Tellvane", 4}, false},
      {"title == %@ OR count == %@", {"Tellvane", 4}, true},
      // AND binds closer than OR.
      {"count == 3 OR count == 4 AND title == 'x'", {}, true},
      {"(count == 3 || count == 4) && title == 'x'", {}, false},
      {"NOT count == 4 and not (title == 'x')", {}, true},
      {"!(count == 3)", {}, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NSPredicate::predicateWithFormat(row.format, row.arguments)->evaluateWithObject(album),
              row.holds)
        << row.format;
  }
}

TEST(PredicateDeathTest, WhatIsNotKnownIsRefusedLoudly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string deep(1000, '(');
  const struct {
    std::string format;
    std::vector<PropertyList> arguments;
  } rows[] = {
      {"", {}},
      {"title", {}},
      {"title ==", {}},
      {"title == %@", {}},
      {"title == %@", {"a", "b"}},
      {"title == %d", {1}},
      {"title ==[c] %@", {"a"}},
      {"title LIKE %@", {"a"}},
      {"title BEGINSWITH %@", {"a"}},
      {"title CONTAINS[cd] %@", {"a"}},
      {"title == other", {}},
      {"count > 3", {}},
      {"title IN %@", {"a"}},
      {"SELF == %@", {"a"}},
      {"title == 'open", {}},
      {"title == %@ title == %@", {"a", "b"}},
      {"(title == %@", {"a"}},
      {deep, {}},
  };
  for (const auto& row : rows) {
    EXPECT_DEATH(NSPredicate::predicateWithFormat(row.format, row.arguments),
                 "unable to parse the format string")
        << row.format;
  }
  EXPECT_DEATH(NSPredicate::predicateWithFormat("colour == 1")->evaluateWithObject({}),
               "no value for the key \"colour\"");
}

}  // namespace
}  // namespace ios
