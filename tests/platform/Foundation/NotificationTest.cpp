#include <gtest/gtest.h>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSNotificationCenter.h"

namespace {

using namespace ios;

/// Writes down what it hears, and then does what the test wants.
class Listener : public Subclass<Listener, NSObject> {
 public:
  Listener(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}
  static MethodList methods() {
    return {{"heard:", &Listener::heard}, {"heardSomething", &Listener::heardSomething}};
  }
  std::function<void()> then;

 private:
  void heard(const std::shared_ptr<NSNotification>& notification) {
    std::string line = name_ + " " + notification->name();
    if (notification->userInfo()) line += " " + *notification->userInfo()->at("id").text();
    log_.push_back(line);
    if (then) then();
  }
  void heardSomething() { log_.push_back(name_ + " something"); }

  std::string name_;
  std::vector<std::string>& log_;
};

class NotificationTest : public testing::Test {
 protected:
  std::shared_ptr<Listener> listener(const std::string& name) {
    return std::make_shared<Listener>(name, log_);
  }
  std::vector<std::string> posted(const std::string& name, const id& object = nullptr,
                                  std::optional<NSDictionary> userInfo = std::nullopt) {
    log_.clear();
    center_->postNotificationName(name, object, std::move(userInfo));
    return log_;
  }
  using Lines = std::vector<std::string>;

  std::shared_ptr<NSNotificationCenter> center_ = std::make_shared<NSNotificationCenter>();
  Lines log_;
};

TEST_F(NotificationTest, ReachMatchingObserversInTheOrderOfRegistration) {
  const auto a = listener("a"), b = listener("b");
  const id sender = std::make_shared<NSObject>(), other = std::make_shared<NSObject>();
  center_->addObserver(b, "heard:", "done", nullptr);
  center_->addObserver(a, "heard:", "done", sender);
  center_->addObserver(a, "heardSomething", std::nullopt, nullptr);
  center_->addObserver(b, "heard:", "done", nullptr);
  EXPECT_EQ(posted("done", sender), (Lines{"b done", "a done", "a something", "b done"}));
  EXPECT_EQ(posted("done", other), (Lines{"b done", "a something", "b done"}));
  EXPECT_EQ(posted("done"), (Lines{"b done", "a something", "b done"}));
  EXPECT_EQ(posted("other", sender), (Lines{"a something"}));
  EXPECT_EQ(posted("done", nullptr, NSDictionary{{"id", "7"}}),
            (Lines{"b done 7", "a something", "b done 7"}));

  center_->removeObserver(*a, "done");
  center_->removeObserver(*b, "done", sender);
  EXPECT_EQ(posted("done", sender), (Lines{"b done", "a something", "b done"}))
      << "b asked for any sender, not this one";
  center_->removeObserver(*b);
  EXPECT_EQ(posted("done", sender), (Lines{"a something"}));
}

TEST_F(NotificationTest, ChangesDuringAPostTakeEffectAtOnceForRemovalsAndNextTimeForAdditions) {
  auto a = listener("a"), b = listener("b"), c = listener("c"), late = listener("late");
  for (const auto& each : {a, b, c}) center_->addObserver(each, "heard:", "done", nullptr);
  a->then = [&] {
    center_->removeObserver(*b);
    center_->addObserver(late, "heard:", "done", nullptr);
    c.reset();
    a->then = nullptr;
  };
  EXPECT_EQ(posted("done"), (Lines{"a done"})) << "c is gone, and nobody kept it alive";
  EXPECT_EQ(posted("done"), (Lines{"a done", "late done"}));

  // A post inside a post is whole before the outer one goes on.
  a->then = [&] {
    a->then = nullptr;
    center_->postNotificationName("inner");
  };
  center_->addObserver(late, "heard:", "inner", nullptr);
  EXPECT_EQ(posted("done"), (Lines{"a done", "late inner", "late done"}));
}

TEST_F(NotificationTest, AnObserverOfASenderThatIsGoneHearsOfNoOther) {
  const auto a = listener("a");
  id sender = std::make_shared<NSObject>();
  center_->addObserver(a, "heard:", "done", sender);
  sender.reset();
  EXPECT_EQ(posted("done"), Lines{});
  EXPECT_EQ(posted("done", std::make_shared<NSObject>()), Lines{});
}

TEST_F(NotificationTest, PostsFromAnyThreadRunThere) {
  Clock::shared().useVirtualTime();
  const auto a = listener("a");
  bool onMain = true;
  a->then = [&] { onMain = isMainThread(); };
  center_->addObserver(a, "heard:", "done", nullptr);
  dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0),
                 [this] { center_->postNotificationName("done"); });
  Clock::shared().runUntilRest();
  EXPECT_FALSE(onMain);
  EXPECT_EQ(log_, Lines{"a done"});
}

TEST(NotificationDeathTest, ASelectorThatTheObserverLacksStopsAtTheRegistration) {
  const id nobody = std::make_shared<NSObject>();
  EXPECT_DEATH(NSNotificationCenter::defaultCenter()->addObserver(nobody, "heard:", "done", nullptr),
               R"(NSObject heard:\]: unrecognized selector)");
}

}  // namespace
