#include "Foundation/NSFileManager.h"

#include <cerrno>
#include <filesystem>

#include "Device/Files.h"

namespace ios {
namespace {

/// The platform's number and words for why a change of the disk failed.
std::shared_ptr<NSError> errorOf(const FileError& failure) {
  const std::string name = "“" + failure.path.filename().string() + "”";
  const auto make = [](long code, std::string text) {
    return std::make_shared<NSError>(NSCocoaErrorDomain, code, std::move(text));
  };
  switch (failure.code) {
    case ENOENT:
      return make(4, name + " couldn’t be changed because it doesn’t exist.");
    case EACCES:
    case EPERM:
      return make(513, "You don’t have permission to change " + name + ".");
    case ENOSPC:
    case EDQUOT:
      return make(640, name + " couldn’t be changed because there isn’t enough space.");
    case EROFS:
      return make(642, name + " couldn’t be changed because the volume is read only.");
    default:
      return make(512, name + " couldn’t be changed: " + std::generic_category().message(failure.code) + ".");
  }
}

}  // namespace

const std::shared_ptr<NSFileManager>& NSFileManager::defaultManager() {
  static auto& manager = *new std::shared_ptr<NSFileManager>(std::make_shared<NSFileManager>());
  return manager;
}

bool NSFileManager::fileExistsAtPath(const std::string& path) const {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

bool NSFileManager::removeItemAtPath(const std::string& path, std::shared_ptr<NSError>& error) const {
  std::error_code ignored;
  // A link that leads nowhere can be removed all the same.
  const bool isThere = std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
  const auto failure = isThere ? removeTree(path) : FileError{ENOENT, "remove", path};
  if (failure) error = errorOf(*failure);
  return !failure;
}

}  // namespace ios
