#include "Device/Applications.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "Device/Device.h"

namespace ios {

namespace fs = std::filesystem;

bool isBundleIdentifier(const std::string& identifier) {
  constexpr std::size_t kLongestName = 200;
  const auto allowed = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' || c == '_';
  };
  return !identifier.empty() && identifier.size() <= kLongestName && identifier.front() != '.' &&
         std::all_of(identifier.begin(), identifier.end(), allowed);
}

fs::path InstalledApplication::executable() const {
  const auto named = info.find("CFBundleExecutable");
  const std::string* name = named == info.end() ? nullptr : named->second.text();
  if (!name || name->empty()) return {};
  const fs::path inside = fs::path(*name).lexically_normal();
  if (inside.is_absolute() || *inside.begin() == ".." || inside == ".") return {};
  return bundle / inside;
}

bool InstalledApplication::claims(const std::string& scheme) const {
  const auto types = info.find("CFBundleURLTypes");
  if (types == info.end() || !types->second.array()) return false;
  for (const auto& type : *types->second.array()) {
    const PropertyList* schemes = type.member("CFBundleURLSchemes");
    if (!schemes || !schemes->array()) continue;
    for (const auto& claimed : *schemes->array()) {
      if (claimed.text() && strcasecmp(claimed.text()->c_str(), scheme.c_str()) == 0) return true;
    }
  }
  return false;
}

fs::path Applications::folder() const {
  return device_.root() / "Applications";
}

std::optional<FileError> Applications::install(const fs::path& source) {
  std::error_code error;
  fs::path bundle = fs::absolute(source, error).lexically_normal();
  if (!bundle.has_filename()) bundle = bundle.parent_path();
  const fs::path infoFile = bundle / "Info.plist";
  FileError unreadable;
  const auto bytes = readFile(infoFile, &unreadable);
  if (!bytes) return unreadable;
  const auto info = PropertyList::parse(*bytes);
  const std::string* identifier = info ? info->text(kCFBundleIdentifierKey) : nullptr;
  if (!identifier || !isBundleIdentifier(*identifier))
    return FileError{EINVAL, "read a bundle identifier from", infoFile};

  const fs::path destination = folder() / *identifier;
  if (fs::equivalent(bundle, destination, error)) return std::nullopt;
  if (auto problem = createFolder(folder())) return problem;
  const fs::path copy = temporaryNameBeside(destination);
  auto problem = copyTree(bundle, copy);
  const bool replaces = fs::exists(fs::symlink_status(destination, error));
  if (!problem) problem = replaces ? exchangeFiles(copy, destination) : renameFile(copy, destination);
  // What is there now is a copy that was not wanted, or the earlier application; a start sweeps what stays.
  static_cast<void>(removeTree(copy));
  return problem;
}

std::optional<FileError> Applications::uninstall(const std::string& bundleIdentifier) {
  std::error_code error;
  const fs::path bundle = folder() / bundleIdentifier;
  if (!isBundleIdentifier(bundleIdentifier) || !fs::exists(fs::symlink_status(bundle, error)))
    return std::nullopt;
  // Under another name first: a process killed meanwhile leaves no half of an application.
  const fs::path doomed = temporaryNameBeside(bundle);
  if (auto problem = renameFile(bundle, doomed)) return FileError{problem->code, "remove", bundle};
  if (auto problem = removeTree(doomed)) {
    fs::rename(doomed, bundle, error);
    return FileError{problem->code, "remove", bundle};
  }
  return std::nullopt;
}

std::vector<InstalledApplication> Applications::all() const {
  std::vector<InstalledApplication> applications;
  std::error_code error;
  fs::directory_iterator entries(folder(), error);
  for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
    const fs::path& bundle = entries->path();
    if (bundle.filename().string().starts_with('.')) continue;
    std::string problem;
    auto info = PropertyList::parse(bundle / "Info.plist", &problem);
    const std::string* identifier = info ? info->text(kCFBundleIdentifierKey) : nullptr;
    if (!identifier || *identifier != bundle.filename()) {
      deviceLog((bundle.lexically_relative(device_.root()) / "Info.plist").string() + " " +
                (info ? "does not name the application by its folder" : problem));
      continue;
    }
    applications.push_back({*identifier, bundle, *info->dictionary()});
  }
  std::sort(applications.begin(), applications.end(),
            [](const auto& a, const auto& b) { return a.bundleIdentifier < b.bundleIdentifier; });
  return applications;
}

std::optional<InstalledApplication> Applications::withIdentifier(const std::string& bundleIdentifier) const {
  for (auto& application : all()) {
    if (application.bundleIdentifier == bundleIdentifier) return application;
  }
  return std::nullopt;
}

std::optional<InstalledApplication> Applications::forScheme(const std::string& scheme) const {
  for (auto& application : all()) {
    if (application.claims(scheme)) return application;
  }
  return std::nullopt;
}

}  // namespace ios
