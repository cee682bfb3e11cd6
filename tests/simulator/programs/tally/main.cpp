// An application in which eight things are due at the same moment: it prints the order in which they came.
#include <cstdio>
#include <string>

#include "DeviceClock/Clock.h"
#include "UIKit/UIApplication.h"

namespace {

class Delegate : public ios::UIApplicationDelegate {
 public:
  bool applicationDidFinishLaunching(ios::UIApplication&) override {
    auto& clock = ios::Clock::shared();
    const auto moment = clock.now() + std::chrono::milliseconds(500);
    for (const char letter : std::string("abcdefgh")) {
      clock.schedule(moment, ios::Clock::Lane::main, [this, letter] {
        order_ += letter;
        if (order_.size() < 8) return;
        std::printf("order %s\n", order_.c_str());
        std::fflush(stdout);
      });
    }
    return true;
  }

 private:
  std::string order_;
};

}  // namespace

int main(int argc, char** argv) {
  return ios::UIApplicationMain(argc, argv, std::make_shared<Delegate>());
}
