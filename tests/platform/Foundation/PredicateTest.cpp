#include <gtest/gtest.h>

#include "Foundation/NSPredicate.h"

namespace ios {
namespace {

TEST(Predicate, HoldsForExactlyTheValueThatItNames) {
  const NSDictionary album{{"title", "Tellvane"}, {"count", 3}, {"shared", true}};
  const struct {
    const char* format;
    PropertyList argument;
    bool holds;
  } rows[] = {
      {"title == %@", "Tellvane", true},
      {"title=%@", "Tellvane", true},
      {"title == %@", "tellvane", false},
      {"title == %@", "Tellvane ", false},
      {"title == %@", "Tellva", false},
      // An argument is a value, whatever it says.
      {"title == %@", "title", false},
      {"title == %@", "%@", false},
      {"title == %@", "x' OR title != 'x", false},
      {"count == %@", 3, true},
      {"count == %@", "3", false},
      {"shared == %@", true, true},
      {"shared == %@", 1, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NSPredicate::predicateWithFormat(row.format, {row.argument})->evaluateWithObject(album),
              row.holds)
        << row.format;
  }
}

TEST(PredicateDeathTest, AnyOtherFormatIsRefusedLoudly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const struct {
    const char* format;
    std::vector<PropertyList> arguments;
  } rows[] = {
      {"", {}},
      {"title ==", {}},
      {"title == %@", {}},
      {"title == %@", {"a", "b"}},
      {"title == %d", {1}},
      {"title == 'a'", {}},
      {"title != %@", {"a"}},
      {"title ==[c] %@", {"a"}},
      {"title LIKE %@", {"a"}},
      {"title == %@ OR title == %@", {"a", "b"}},
      {"== %@", {"a"}},
  };
  for (const auto& row : rows) {
    EXPECT_DEATH(NSPredicate::predicateWithFormat(row.format, row.arguments),
                 "unable to parse the format string")
        << row.format;
  }
  EXPECT_DEATH(NSPredicate::predicateWithFormat("colour == %@", {1})->evaluateWithObject({}),
               "no value for the key \"colour\"");
}

}  // namespace
}  // namespace ios
