#include "ObjectiveC/Class.h"

#include <gtest/gtest.h>

#include <thread>

#include "Animals.h"

namespace ios {

class NSPrivateThing : public NSObject {};
namespace {
class NSUnnamedThing : public NSObject {};
}  // namespace

namespace {

using namespace Zoo;
using Log = std::vector<std::string>;

TEST(Objects, CallTheNearestMethodAndTheInheritedOne) {
  Animal animal;
  Dog dog;
  Puppy puppy;
  for (Animal* each : std::initializer_list<Animal*>{&animal, &dog, &puppy}) send(*each, "speak");
  EXPECT_EQ(animal.log, (Log{"animal speaks"}));
  EXPECT_EQ(dog.log, (Log{"dog barks", "animal speaks"}));
  EXPECT_EQ(puppy.log, dog.log);
  EXPECT_EQ(send<double>(puppy, "weight"), 12.5);
  EXPECT_FALSE(puppy.respondsToSelector("fly"));
  EXPECT_FALSE(Stone().respondsToSelector("speak"));
}

TEST(Objects, CarryArgumentsByTheirRootClass) {
  Animal animal;
  send(animal, "meet:", std::make_shared<Puppy>());
  send(animal, "meet:", std::shared_ptr<NSObject>(std::make_shared<Dog>()));
  send(animal, "meet:", std::make_shared<Stone>());  // of another class: arrives empty
  send(animal, "meet:", id());
  send(animal, "meet:mood:", std::make_shared<Animal>(), Mood::angry);
  send(animal, "ignores:", std::make_shared<Stone>());
  const int number = 7;
  send(animal, "count:", number);
  EXPECT_EQ(animal.log, (Log{"met Zoo.Puppy", "met Zoo.Dog", "met nobody", "met nobody", "met Zoo.Animal",
                             "angrily", "ignored the argument", "7"}));
}

void whisper(Dog& dog) {
  dog.log.push_back("dog whispers");
  sendSuper(dog, Dog::classObject(), "speak");
}
void fly(Animal& animal) {
  animal.log.push_back("flies");
}
void wag(Dog& dog) {
  dog.log.push_back("wags");
}

TEST(Categories, ReplaceOverrideAndReachEverySubclass) {
  Puppy puppy;
  const Category late{Animal::classObject(), {{"fly", &fly}, {"wag", &fly}}};
  send(puppy, "fly");
  send(puppy, "wag");
  const Category nearer{Dog::classObject(), {{"speak", &whisper}, {"wag", &wag}}};
  send(puppy, "speak");
  send(puppy, "wag");
  EXPECT_EQ(puppy.log, (Log{"flies", "flies", "dog whispers", "animal speaks", "wags"}));
  Animal animal;
  send(animal, "speak");
  send(animal, "wag");
  EXPECT_EQ(animal.log, (Log{"animal speaks", "flies"}));
}

void roll(Dog& dog) {
  dog.log.push_back("rolls");
}
// Added before any thread looks it up.
const Category kEarly{Dog::classObject(), {{"roll", &roll}}};

// Fault: replacing a method pulls it from under a thread that is looking it up or is inside it.
TEST(Categories, MayComeWhileAnotherThreadCalls) {
  std::thread caller([] {
    for (int i = 0; i < 2000; ++i) {
      Dog dog;
      send(dog, "roll");
    }
  });
  for (int i = 0; i < 200; ++i) Category(Dog::classObject(), {{"roll", &roll}});
  caller.join();
  Dog dog;
  send(dog, "roll");
  EXPECT_EQ(dog.log, (Log{"rolls"}));
}

TEST(Classes, AreDescribedAsTheirReadersKnowThem) {
  class Local : public NSObject {};
  const std::pair<std::shared_ptr<NSObject>, std::string> rows[] = {
      {std::make_shared<NSObject>(), "NSObject"},
      {std::make_shared<NSPrivateThing>(), "NSPrivateThing"},
      {std::make_shared<NSUnnamedThing>(), "NSUnnamedThing"},
      {std::make_shared<Dog>(), "Zoo.Dog"},
      {std::make_shared<Box<NSPrivateThing>>(), "Zoo.Box<NSPrivateThing>"},
      {std::make_shared<Box<Dog>>(), "Zoo.Box<Zoo.Dog>"},
  };
  for (const auto& [object, description] : rows) EXPECT_EQ(object->className(), description);
  EXPECT_EQ(Puppy().isa().description(), "Zoo.Dog");
  EXPECT_NE(Local().className().find("Local"), std::string::npos);
}

TEST(Classes, ASubclassIsNotAMemberOfItsBase) {
  Puppy puppy;
  EXPECT_FALSE(isMemberOfClass<Dog>(puppy));
  EXPECT_TRUE(isMemberOfClass<Puppy>(puppy));
}

TEST(Actions, TakeTheirSenderOrNothing) {
  const auto target = std::make_shared<Puppy>();
  const id sender = std::make_shared<Dog>();
  for (const char* selector : {"meet:", "ignores:", "speak"})
    Action(target, selector).perform(*target, sender);
  EXPECT_EQ(target->log, (Log{"met Zoo.Dog", "ignored the argument", "dog barks", "animal speaks"}));
}

TEST(Selectors, AreEqualWhenTheirNamesAre) {
  const std::string built = std::string("motionEnded:") + "withEvent:";
  EXPECT_EQ(Selector(built), Selector("motionEnded:withEvent:"));
  EXPECT_EQ(std::hash<Selector>()(built), std::hash<Selector>()("motionEnded:withEvent:"));
  EXPECT_NE(Selector("motionEnded:"), Selector("motionEnded"));
  EXPECT_EQ(Selector(built).argumentCount(), 2);
}

}  // namespace
}  // namespace ios
