#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Mutex.h"
#include "CoreFoundation/PropertyList.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

/// A folder with an Info.plist (XML or binary) and resources, localised ones in `<language>.lproj` folders.
/// Any thread; made once per folder and alive until the process ends. What was read is kept.
class NSBundle : public NSObject {
 public:
  /// The running application's bundle.
  static std::shared_ptr<NSBundle> mainBundle();
  /// The bundle of an application or framework that this process can load from, or empty. Looked for in: the
  /// main bundle; `Frameworks/*.framework` and `*.framework` of the main bundle and beside the executable;
  /// the framework folders around every image the process has loaded; the folders listed in
  /// IOS_FRAMEWORK_PATH (":"-separated).
  static std::shared_ptr<NSBundle> bundleWithIdentifier(const std::string& identifier);
  static std::shared_ptr<NSBundle> bundleWithPath(const std::filesystem::path& path);

  const std::filesystem::path& bundlePath() const { return path_; }
  /// Empty without an Info.plist, and with one that cannot be read (a line on standard error says so).
  const std::optional<NSDictionary>& infoDictionary() const { return info_; }
  std::optional<std::string> bundleIdentifier() const;

  /// The text under `key` in `<table>.strings` of the user's most preferred language that the bundle has, falling back
  /// from "de-AT" to "de", through the list of preferred languages to the bundle's development language. A key that is
  /// missing gives `value`, or the key itself when `value` is empty. A damaged table gives the entries before the
  /// damage, with a line on standard error.
  std::string localizedStringForKey(const std::string& key, const std::string& value,
                                    const std::string& table) const;
  /// The best localised, else the unlocalised file of that name; empty if there is none.
  std::optional<std::filesystem::path> pathForResource(const std::string& name,
                                                       const std::string& type) const;

  explicit NSBundle(std::filesystem::path path);

 private:
  /// Folders to look in, best first: the localisations that fit the user, then the bundle itself.
  std::vector<std::filesystem::path> resourceFolders() const;

  std::filesystem::path path_;
  std::optional<NSDictionary> info_;
  mutable Mutex mutex_;
  mutable std::map<std::filesystem::path, std::shared_ptr<const std::map<std::string, std::string>>> tables_
      IOS_GUARDED_BY(mutex_);
};

/// The localised text for `key`; the key itself where there is none.
std::string NSLocalizedString(const std::string& key, const std::string& table,
                              const std::shared_ptr<NSBundle>& bundle, const std::string& value);

}  // namespace ios
