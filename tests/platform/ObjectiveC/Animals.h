#pragma once

#include <string>
#include <vector>

#include "ObjectiveC/NSObject.h"

namespace Zoo {

enum class Mood : short { calm, angry };

/// Notes what is called on it.
class Animal : public ios::Subclass<Animal, ios::NSObject> {
 public:
  static ios::MethodList methods() {
    return {{"speak", &Animal::speak},      {"meet:", &Animal::meet},   {"meet:mood:", &Animal::meetInMood},
            {"ignores:", &Animal::ignores}, {"count:", &Animal::count}, {"weight", &Animal::weight}};
  }
  void speak() { log.push_back("animal speaks"); }
  void meet(const std::shared_ptr<Animal>& other) {
    log.push_back(other ? "met " + other->className() : "met nobody");
  }
  void meetInMood(std::shared_ptr<Animal> other, Mood mood) {
    meet(other);
    log.push_back(mood == Mood::angry ? "angrily" : "calmly");
  }
  void ignores() { log.push_back("ignored the argument"); }
  void count(int number) { log.push_back(std::to_string(number)); }
  double weight() const { return 12.5; }

  std::vector<std::string> log;
};

class Dog : public ios::Subclass<Dog, Animal> {
 public:
  static ios::MethodList methods() { return {{"speak", &Dog::bark}}; }
  void bark() {
    log.push_back("dog barks");
    ios::sendSuper(*this, classObject(), "speak");
  }
};

/// Has no method table of its own.
class Puppy : public Dog {};

class Stone : public ios::NSObject {};

template <class T>
class Box : public ios::NSObject {};

}  // namespace Zoo
