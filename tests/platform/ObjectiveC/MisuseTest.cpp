#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "Animals.h"

namespace ios {
namespace {

using namespace Zoo;

struct Misuse {
  const char* name;
  std::function<void()> act;
  const char* message;

  friend void PrintTo(const Misuse& misuse, std::ostream* out) { *out << misuse.name; }
};

void bite(Dog& dog) {
  dog.log.push_back("bites");
}

const Misuse kMisuses[] = {
    {"AnUnknownSelector",
     [] {
       Puppy puppy;
       send(puppy, "fly");
     },
     R"(-\[Zoo.Puppy fly\]: unrecognized selector)"},
    {"NothingInherited",
     [] {
       Animal animal;
       sendSuper(animal, Animal::classObject(), "speak");
     },
     R"(-\[Zoo.Animal speak\]: unrecognized selector)"},
    {"AWrongArgument",
     [] {
       Animal animal;
       send(animal, "count:", std::string("three"));
     },
     R"(-\[Zoo.Animal count:\] is .*int.* and was called as .*string)"},
    {"AMissingArgument",
     [] {
       Animal animal;
       send(animal, "meet:mood:", std::make_shared<Animal>());
     },
     R"(-\[Zoo.Animal meet:mood:\] is)"},
    {"AWrongResult",
     [] {
       Animal animal;
       send<int>(animal, "weight");
     },
     R"(-\[Zoo.Animal weight\] is .*double.* and was called as .*int)"},
    {"ACategoryWrittenForASubclass",
     [] {
       Animal animal;
       const Category category{Animal::classObject(), {{"bite", &bite}}};
       send(animal, "bite");
     },
     R"(-\[Zoo.Animal bite\] was written for Zoo.Dog)"},
    {"AMethodThatDoesNotFitItsSelector", [] { Method("count:and:", &Animal::count); },
     R"("count:and:" takes 1)"},
    {"AnActionWithoutATarget", [] { Action(nullptr, "speak"); }, R"(no target for the action "speak")"},
    {"AnActionThatTheTargetLacks", [] { Action(std::make_shared<Stone>(), "speak"); },
     R"(-\[Zoo.Stone speak\]: unrecognized selector)"},
    {"AnActionOfTwoArguments", [] { Action(std::make_shared<Animal>(), "meet:mood:"); },
     "at most its sender"},
    {"AnActionThatTakesANumber", [] { Action(std::make_shared<Animal>(), "count:"); },
     R"(-\[Zoo.Animal count:\] is .*int.* and was called as an action)"},
    {"AnActionWithAResult", [] { Action(std::make_shared<Animal>(), "weight"); }, "was called as an action"},
};

class ObjectsDeathTest : public testing::TestWithParam<Misuse> {};

TEST_P(ObjectsDeathTest, StopAtOnceWithAMessage) {
  EXPECT_DEATH(GetParam().act(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Misuse, ObjectsDeathTest, testing::ValuesIn(kMisuses),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ios
