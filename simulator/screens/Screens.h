#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "Device/Applications.h"
#include "UIKit/UIViewController.h"

namespace simulator {

/// What the phone itself shows while no application of the flow is in front.
inline const std::string kCompanionIdentifier = TELLVANE_COMPANION_IDENTIFIER;
inline const std::string kSettingsIdentifier = "settings";
inline const std::string kStorePage = TELLVANE_STORE_PAGE;

/// Something that was tapped on one of these screens, for the phone to do.
struct ScreenWish {
  enum class Kind { open, back, install, permit, refuse } kind = Kind::back;
  std::string bundleIdentifier;
  std::string service = {};  // to permit or refuse
};
/// Name of an application as people see it.
std::string displayName(const ios::InstalledApplication& application);

using WishSink = std::function<void(ScreenWish)>;

/// Icons of what is installed.
std::shared_ptr<ios::UIViewController> makeHomeScreen(WishSink wish);
/// The newest report of the companion whose home folder is `home`. `backTo`: name of the application that
/// led here; may be empty.
std::shared_ptr<ios::UIViewController> makeCompanionScreen(const std::filesystem::path& home,
                                                           const std::string& backTo, WishSink wish);
/// A page of the web; the companion's own page in the store is one from which it can be installed.
std::shared_ptr<ios::UIViewController> makeWebScreen(const std::string& url, const std::string& backTo,
                                                     WishSink wish);
/// What applications may do, with a switch for each.
std::shared_ptr<ios::UIViewController> makeSettingsScreen(const std::string& backTo, WishSink wish);
/// An application that draws nothing itself.
std::shared_ptr<ios::UIViewController> makePlainScreen(const std::string& bundleIdentifier,
                                                       const std::string& backTo, WishSink wish);

}  // namespace simulator
