#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Foundation/NSBundle.h"
#include "Tellvane/Platform.h"
#include "Tellvane/TLVNotifications.h"

namespace tellvane {

// Stored constants, for any thread. Those that ask the platform are functions: the first call finds the
// value, and every later one gives the same.

/// The bundle identifier that the library is packaged under.
extern const char TLV_BUNDLE_IDENTIFIER[];
/// The library's own bundle: its texts, its interface file, its version. When it cannot be found (a packaging
/// fault), an empty bundle, so that keys show as texts and versions read "0", and one line on standard error.
const std::shared_ptr<NSBundle>& TLV_BUNDLE();
/// Title of the library's album in the photo library.
inline constexpr char TLV_TITILE[] = "Tellvane";
/// File that a recording is written to, in the application's temporary folder.
const std::string& TLV_SCREEN_RECORDING_PATH();
/// Opens the companion application.
extern const char TLV_URL[];
/// The companion application's page in the store.
extern const char TLV_STORE_PAGE[];
/// Taps of one trigger, fingers of the other.
inline constexpr long TLV_TAP_COUNT = 3;
/// Seconds after which a recording is stopped.
inline constexpr double TLV_RECORDING_TIME_SEC = 30.0;
/// Bytes that a still image's JPEG should not exceed: 2 MiB.
inline constexpr long TLV_SCREENSHOT_MAXSIZE = 2 * 1024 * 1024;

// Computed values, built afresh by each call. Any thread, except where the main thread is named.

/// "iOS-1.2.7": short version and build of the library; "0" when either is missing.
std::string TLV_SDK_VERSION();
/// "3.0.12": short version and build of the host application; "0" when either is missing.
std::string APP_VERSION();
/// The host's display name, else its bundle name, else "Tellvane-Dev".
std::string APP_NAME();
/// The host's bundle name, else "Tellvane-Dev".
std::string APP_BUNDLE_NAME();
std::string OS_VERSION();
/// "750.00 x 1334.00", in pixels, as the device is held. Main thread.
std::string DEVICE_RESOLUTION();
/// The user's first language, "en-US" when there is none.
std::string DEVICE_LANGUAGE();
std::string DEVICE_MODEL();

// The same, as plain functions of what they read.

/// "short.build" after `prefix`; "0" when either is missing or not a string.
std::string versionText(const std::optional<NSDictionary>& info, const std::string& prefix);
/// The first of `keys` that holds a string, else "Tellvane-Dev".
std::string nameText(const std::optional<NSDictionary>& info, const std::vector<std::string>& keys);
/// Two decimals each, whatever the locale.
std::string resolutionText(double width, double height);

}  // namespace tellvane
