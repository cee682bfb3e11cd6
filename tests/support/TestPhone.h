#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "Device/Device.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIViewController.h"
#include "UIKit/UIWindow.h"
#include "support/Process.h"
#include "support/ScratchFolder.h"

namespace testing_support {

/// Takes over standard output while it lives and keeps what was written; hands it on at the end.
class Console {
 public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  std::string text() const;
  /// How many lines are exactly `line`.
  int count(const std::string& line) const;

 private:
  int file_, original_;
};

/// A phone of its own for one test: virtual time, a device folder that is deleted with it, a host application
/// without windows, active. One per process.
class TestPhone {
 public:
  struct Options {
    std::string profile = "iPhone 6";
    std::vector<std::string> languages = {"en-US"};
    /// The host's Info dictionary, beside its bundle identifier.
    ios::NSDictionary info = {{"CFBundleName", "Notes"},
                              {"CFBundleDisplayName", "My Notes"},
                              {"CFBundleShortVersionString", "3.0"},
                              {"CFBundleVersion", "12"}};
    bool launched = true;
  };
  TestPhone() : TestPhone(Options{}) {}
  explicit TestPhone(Options options);
  ~TestPhone();

  ios::Device& device() const { return ios::Device::current(); }
  const std::filesystem::path& folder() const { return folder_.path(); }

  /// Shows `root` in a new key window of the screen's size; without one, a plain white controller.
  std::shared_ptr<ios::UIWindow> show(std::shared_ptr<ios::UIViewController> root = nullptr);

  void runFor(double seconds) const;
  /// Seconds since the phone was started.
  double now() const;
  void tap(ios::CGPoint point, int count = 1, int fingers = 1) const;
  // As a person sees the screen: what is hidden, cut off or covered is not there.
  /// Taps the middle of the element that says `text`, the foremost if there are several; false when there is none.
  bool tapText(const std::string& text) const;
  bool shows(const std::string& text) const;
  /// From back to front.
  std::vector<std::string> texts() const;

  /// Installs an application that is the shell script `script`, and claims `scheme`.
  void installApplication(const std::string& identifier, const std::string& scheme,
                          const std::string& script) const;

 private:
  ScratchFolder folder_;
  std::vector<std::shared_ptr<ios::UIWindow>> windows_;
};

/// Writes `bytes` to a new file below `folder` and returns its path.
std::filesystem::path fileWith(const std::filesystem::path& folder, const std::string& name,
                               const ios::Bytes& bytes);

}  // namespace testing_support
