#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "UIKit/UIAlertController.h"
#include "UIKit/UIPopoverPresentationController.h"
#include "support/TestPhone.h"

namespace controllers_test {

using namespace ios;
using testing_support::TestPhone;
using Controller = std::shared_ptr<UIViewController>;

/// What happened, in order.
using Journal = std::shared_ptr<std::vector<std::string>>;

/// A screen that writes its appearance calls down: "A willAppear", with "*" behind it where animated.
class JournalController : public Subclass<JournalController, UIViewController> {
 public:
  JournalController(std::string name, Journal journal) : journal_(std::move(journal)) {
    setTitle(std::move(name));
  }
  static MethodList methods() { return {}; }
  void viewWillAppear(bool animated) override { note("willAppear", animated); }
  void viewDidAppear(bool animated) override {
    note("didAppear", animated);
    if (const auto next = std::exchange(onDidAppear, nullptr)) next();
  }
  void viewWillDisappear(bool animated) override { note("willDisappear", animated); }
  void viewDidDisappear(bool animated) override { note("didDisappear", animated); }
  std::function<void()> onDidAppear;

 private:
  void note(const std::string& what, bool animated) {
    journal_->push_back(title() + " " + what + (animated ? "*" : ""));
  }
  Journal journal_;
};

inline std::shared_ptr<JournalController> screen(const std::string& name, const Journal& journal) {
  return std::make_shared<JournalController>(name, journal);
}

inline Controller plain(const std::string& title = "") {
  auto controller = std::make_shared<UIViewController>();
  controller->view()->setBackgroundColor(UIColor::whiteColor());
  controller->setTitle(title);
  return controller;
}

/// The entries since the last call, joined by ", ".
inline std::string taken(const Journal& journal) {
  std::string joined;
  for (const auto& entry : *journal) joined += (joined.empty() ? "" : ", ") + entry;
  journal->clear();
  return joined;
}

/// What the platform says on standard error while `work` runs.
inline std::string complaintsOf(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

}  // namespace controllers_test
