#include "support/TestPhone.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "DeviceClock/Clock.h"
#include "UIKit/VisibleElements.h"

namespace testing_support {

using namespace ios;

namespace {

constexpr char kHost[] = "com.example.host";

void writeText(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

}  // namespace

Console::Console() : file_(-1), original_(dup(STDOUT_FILENO)) {
  std::fflush(stdout);
  std::string name = (std::filesystem::temp_directory_path() / "console-XXXXXX").string();
  file_ = mkstemp(name.data());
  unlink(name.c_str());
  dup2(file_, STDOUT_FILENO);
}

Console::~Console() {
  std::fflush(stdout);
  const std::string written = text();
  dup2(original_, STDOUT_FILENO);
  close(original_);
  close(file_);
  std::fwrite(written.data(), 1, written.size(), stdout);
}

std::string Console::text() const {
  std::string written;
  std::array<char, 4096> piece{};
  for (off_t at = 0;;) {
    const ssize_t count = pread(file_, piece.data(), piece.size(), at);
    if (count <= 0) return written;
    written.append(piece.data(), static_cast<std::size_t>(count));
    at += count;
  }
}

int Console::count(const std::string& line) const {
  std::istringstream lines(text());
  int found = 0;
  for (std::string one; std::getline(lines, one);) found += one == line;
  return found;
}

TestPhone::TestPhone(Options options) {
  const auto bundle = folder() / "Applications" / kHost;
  NSDictionary info = options.info;
  info["CFBundleIdentifier"] = kHost;
  writeText(bundle / "Info.plist", PropertyList(info).xml());
  std::filesystem::create_directories(bundle / "Frameworks");
  std::filesystem::create_directory_symlink(TELLVANE_FRAMEWORK, bundle / "Frameworks" / "Tellvane.framework");

  Clock::shared().useVirtualTime();
  DeviceSettings settings;
  settings.profile = options.profile;
  settings.languages = options.languages;
  Device::start({.root = folder(), .mainBundle = bundle, .bundleIdentifier = {}, .settings = settings});
  if (options.launched) UIApplication::sharedApplication()->launch(std::make_shared<UIApplicationDelegate>());
}

TestPhone::~TestPhone() {
  windows_.clear();
}

std::shared_ptr<UIWindow> TestPhone::show(std::shared_ptr<UIViewController> root) {
  if (!root) {
    root = std::make_shared<UIViewController>();
    root->view()->setBackgroundColor(UIColor::whiteColor());
  }
  const CGSize size = device().screenSize();
  auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, size.width, size.height));
  window->setRootViewController(std::move(root));
  window->makeKeyAndVisible();
  windows_.push_back(window);
  return window;
}

void TestPhone::runFor(double seconds) const {
  Clock::shared().runFor(std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9)));
}

double TestPhone::now() const {
  return Clock::shared().secondsNow();
}

void TestPhone::tap(CGPoint point, int count, int fingers) const {
  device().input().tap(Input::Tap{.location = point, .count = count, .fingers = fingers});
}

bool TestPhone::tapText(const std::string& text) const {
  const auto elements = visibleElements(*UIApplication::sharedApplication());
  for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
    if (element->text != text) continue;
    tap({element->frame.midX(), element->frame.midY()});
    return true;
  }
  return false;
}

bool TestPhone::shows(const std::string& text) const {
  const auto all = texts();
  return std::find(all.begin(), all.end(), text) != all.end();
}

std::vector<std::string> TestPhone::texts() const {
  std::vector<std::string> texts;
  for (const auto& element : visibleElements(*UIApplication::sharedApplication()))
    texts.push_back(element.text);
  return texts;
}

void TestPhone::installApplication(const std::string& identifier, const std::string& scheme,
                                   const std::string& script) const {
  const auto bundle = folder() / "Applications" / identifier;
  const NSDictionary types{{"CFBundleURLSchemes", NSArray{scheme}}};
  writeText(bundle / "Info.plist", PropertyList(NSDictionary{{"CFBundleIdentifier", identifier},
                                                             {"CFBundleExecutable", "run"},
                                                             {"CFBundleURLTypes", NSArray{types}}})
                                       .xml());
  writeText(bundle / "run", "#!/bin/sh\n" + script + "\n");
  std::filesystem::permissions(bundle / "run", std::filesystem::perms::owner_all);
}

std::filesystem::path fileWith(const std::filesystem::path& folder, const std::string& name,
                               const Bytes& bytes) {
  const auto path = folder / name;
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path;
}

}  // namespace testing_support
