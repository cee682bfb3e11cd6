#include "Foundation/NSBundle.h"

#include <algorithm>

#include "Device/Device.h"
#include "Foundation/NSLocale.h"
#include "Foundation/Private/BundleSearch.h"
#include "Foundation/Private/StringsTable.h"

namespace ios {
namespace {

namespace fs = std::filesystem;

/// Every bundle that was made, by folder, and those found by identifier.
struct Bundles {
  Mutex mutex;
  std::map<fs::path, std::shared_ptr<NSBundle>> byPath IOS_GUARDED_BY(mutex);
  std::map<std::string, std::shared_ptr<NSBundle>> byIdentifier IOS_GUARDED_BY(mutex);

  static Bundles& shared() {
    static auto& bundles = *new Bundles;
    return bundles;
  }
};

/// The folder names that may hold texts for `language`, closest first.
std::vector<std::string> folderNamesFor(std::string language) {
  std::replace(language.begin(), language.end(), '_', '-');
  std::vector<std::string> names;
  const auto add = [&names](std::string name) {
    std::string underscored = name;
    std::replace(underscored.begin(), underscored.end(), '-', '_');
    for (auto& form : {name, underscored}) {
      if (std::find(names.begin(), names.end(), form) == names.end()) names.push_back(form);
    }
  };
  for (std::string tag = language;; tag.resize(tag.rfind('-'))) {
    add(tag);
    // Chinese is written in two scripts, which a region stands for where none is named.
    if (tag == "zh-CN" || tag == "zh-SG") add("zh-Hans");
    if (tag == "zh-TW" || tag == "zh-HK" || tag == "zh-MO") add("zh-Hant");
    if (tag.find('-') == std::string::npos) return names;
  }
}

}  // namespace

std::shared_ptr<NSBundle> NSBundle::mainBundle() {
  return bundleWithPath(Device::current().mainBundle());
}

std::shared_ptr<NSBundle> NSBundle::bundleWithPath(const fs::path& path) {
  std::error_code error;
  fs::path canonical = fs::canonical(path, error);
  if (error) canonical = fs::absolute(path, error).lexically_normal();
  Bundles& bundles = Bundles::shared();
  MutexLock lock(bundles.mutex);
  auto& bundle = bundles.byPath[canonical];
  if (!bundle) bundle = std::make_shared<NSBundle>(canonical);
  return bundle;
}

std::shared_ptr<NSBundle> NSBundle::bundleWithIdentifier(const std::string& identifier) {
  Bundles& bundles = Bundles::shared();
  {
    MutexLock lock(bundles.mutex);
    if (auto known = bundles.byIdentifier.find(identifier); known != bundles.byIdentifier.end())
      return known->second;
  }
  const auto found = [&](const fs::path& folder) -> std::shared_ptr<NSBundle> {
    auto bundle = bundleWithPath(folder);
    return bundle->bundleIdentifier() == identifier ? bundle : nullptr;
  };
  std::shared_ptr<NSBundle> bundle = found(Device::current().mainBundle());
  if (!bundle) {
    for (const auto& folder : frameworkFolders(Device::current().mainBundle())) {
      if ((bundle = found(folder))) break;
    }
  }
  if (!bundle) return nullptr;
  MutexLock lock(bundles.mutex);
  return bundles.byIdentifier[identifier] = bundle;
}

NSBundle::NSBundle(fs::path path) : path_(std::move(path)) {
  std::error_code error;
  const fs::path file = path_ / "Info.plist";
  if (!fs::exists(file, error)) return;
  std::string problem;
  auto info = PropertyList::parse(file, &problem);
  if (info && info->dictionary()) {
    info_ = *info->dictionary();
  } else {
    deviceLog(file.string() + " " + (info ? "is not a dictionary" : problem));
  }
}

std::optional<std::string> NSBundle::bundleIdentifier() const {
  if (!info_) return std::nullopt;
  const auto identifier = info_->find(kCFBundleIdentifierKey);
  if (identifier == info_->end() || !identifier->second.text()) return std::nullopt;
  return *identifier->second.text();
}

std::vector<fs::path> NSBundle::resourceFolders() const {
  std::vector<std::string> languages = NSLocale::preferredLanguages();
  languages.emplace_back("Base");
  if (info_) {
    const auto development = info_->find("CFBundleDevelopmentRegion");
    if (development != info_->end() && development->second.text())
      languages.push_back(*development->second.text());
  }
  std::vector<fs::path> folders;
  for (const auto& language : languages) {
    // A language comes from settings or an Info dictionary; it names a folder here, and must not lead out of
    // the bundle.
    if (language.empty() || language.find('/') != std::string::npos) continue;
    for (const auto& name : folderNamesFor(language)) folders.push_back(path_ / (name + ".lproj"));
  }
  folders.push_back(path_);
  return folders;
}

std::optional<fs::path> NSBundle::pathForResource(const std::string& name, const std::string& type) const {
  const std::string file = type.empty() ? name : name + "." + type;
  std::error_code error;
  for (const auto& folder : resourceFolders()) {
    if (fs::exists(folder / file, error)) return folder / file;
  }
  return std::nullopt;
}

std::string NSBundle::localizedStringForKey(const std::string& key, const std::string& value,
                                            const std::string& table) const {
  const std::string& missing = value.empty() ? key : value;
  const auto file = pathForResource(table, "strings");
  if (!file) return missing;
  std::shared_ptr<const std::map<std::string, std::string>> texts;
  {
    MutexLock lock(mutex_);
    auto& kept = tables_[*file];
    if (!kept) {
      FileError failure;
      StringsTable read;
      if (const auto bytes = readFile(*file, &failure)) {
        read = readStringsTable(*bytes);
        if (!read.problem.empty()) deviceLog(file->string() + ":" + read.problem);
      } else {
        deviceLog(failure.description());
      }
      kept = std::make_shared<const std::map<std::string, std::string>>(std::move(read.texts));
    }
    texts = kept;
  }
  const auto found = texts->find(key);
  return found == texts->end() ? missing : found->second;
}

std::string NSLocalizedString(const std::string& key, const std::string& table,
                              const std::shared_ptr<NSBundle>& bundle, const std::string& value) {
  if (!bundle) return value.empty() ? key : value;
  return bundle->localizedStringForKey(key, value, table);
}

}  // namespace ios
