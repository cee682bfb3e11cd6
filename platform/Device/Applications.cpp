#include "Device/Applications.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "Device/Device.h"
#include "Device/Files.h"

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

fs::path InstalledApplication::executable(std::string& problem) const {
  const auto named = info.find("CFBundleExecutable");
  const std::string* name = named == info.end() ? nullptr : named->second.text();
  if (!name || name->empty() || *name == ".") {
    problem = "its Info.plist names no executable";
    return {};
  }
  const auto leadsOut = [](const fs::path& inside) {
    return inside.empty() || inside.is_absolute() || *inside.begin() == "..";
  };
  const fs::path file = bundle / *name;
  std::error_code error;
  // A link must not lead out either.
  if (leadsOut(fs::path(*name).lexically_normal()) ||
      leadsOut(fs::weakly_canonical(file, error).lexically_relative(fs::weakly_canonical(bundle, error)))) {
    problem = "its executable \"" + *name + "\" leads outside the bundle";
  } else if (!fs::is_regular_file(file, error)) {
    problem = "there is no " + file.string();
  } else if (::access(file.c_str(), X_OK) != 0) {
    problem = file.string() + " is not executable";
  } else {
    return file.lexically_normal();
  }
  return {};
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
  std::string problem;
  const auto info = PropertyList::parse(*bytes, &problem);
  if (!info) return FileError{EINVAL, "read", infoFile, "it " + problem};
  const std::string* identifier = info->text(kCFBundleIdentifierKey);
  if (!identifier || !isBundleIdentifier(*identifier))
    return FileError{EINVAL, "read", infoFile, "it has no usable CFBundleIdentifier"};

  const fs::path destination = folder() / *identifier;
  if (fs::equivalent(bundle, destination, error)) return std::nullopt;
  if (auto problem = createFolder(folder())) return problem;
  const fs::path copy = temporaryNameBeside(destination);
  auto refusal = copyTree(bundle, copy);
  const bool replaces = fs::exists(fs::symlink_status(destination, error));
  if (!refusal) refusal = replaces ? exchangeFiles(copy, destination) : renameFile(copy, destination);
  // `copy` now holds the earlier application, or a copy that failed; what cannot be removed is swept later.
  static_cast<void>(removeTree(copy));
  return refusal;
}

std::optional<FileError> Applications::uninstall(const std::string& bundleIdentifier) {
  std::error_code error;
  const fs::path bundle = folder() / bundleIdentifier;
  if (!isBundleIdentifier(bundleIdentifier) || !fs::exists(fs::symlink_status(bundle, error)))
    return std::nullopt;
  // Renamed first, so that a process killed midway leaves no half-removed application.
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
  for (const fs::path& bundle : filesIn(folder())) {
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
