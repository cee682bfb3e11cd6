#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <memory>

#include "UIKit/UIApplication.h"
#include "UIKit/UIButton.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"

namespace Trouble {

using namespace ios;

/// Two buttons: one that ends the process by a signal, one after which it never answers again.
class Controller : public Subclass<Controller, UIViewController> {
 public:
  static MethodList methods() { return {{"crash", &Controller::crash}, {"hang", &Controller::hang}}; }

  void viewDidLoad() override {
    view()->setBackgroundColor(UIColor::colorWithHex(0xFFFFFF));
    add("Crash", "crash", 200);
    add("Hang", "hang", 300);
  }

 private:
  void add(const char* title, const char* action, CGFloat y) {
    auto button = std::make_shared<UIButton>();
    button->setTitle(title);
    button->setTitleColor(UIColor::colorWithHex(0x007AFF));
    button->addTarget(weak_from_this().lock(), action, UIControlEventTouchUpInside);
    button->setFrame(CGRectMake(60, y, 200, 60));
    view()->addSubview(button);
  }

  void crash() {
    std::fprintf(stderr, "about to crash\n");
    std::raise(SIGSEGV);
  }

  void hang() {
    for (;;) pause();
  }
};

class Delegate : public UIApplicationDelegate {
 public:
  bool applicationDidFinishLaunching(UIApplication&) override {
    window_ = std::make_shared<UIWindow>(UIScreen::mainScreen()->bounds());
    window_->setRootViewController(std::make_shared<Controller>());
    window_->makeKeyAndVisible();
    return true;
  }

 private:
  std::shared_ptr<UIWindow> window_;
};

}  // namespace Trouble

int main(int argc, char** argv) {
  return ios::UIApplicationMain(argc, argv, std::make_shared<Trouble::Delegate>());
}
