#include "simulator/server/KeptFiles.h"

namespace simulator {
namespace {

constexpr std::size_t kMostFiles = 64, kMostBytes = 64 << 20;

}  // namespace

std::string KeptFiles::keep(const std::string& name, std::string bytes) {
  ios::MutexLock lock(mutex_);
  std::string path = std::to_string(++count_) + "/" + name;
  bytes_ += bytes.size();
  files_.push_back({path, std::make_shared<const std::string>(std::move(bytes))});
  while (files_.size() > kMostFiles || (bytes_ > kMostBytes && files_.size() > 1)) {
    bytes_ -= files_.front().content->size();
    files_.pop_front();
  }
  return path;
}

KeptFiles::Content KeptFiles::find(std::string_view path) const {
  ios::MutexLock lock(mutex_);
  for (const File& file : files_) {
    if (file.path == path) return file.content;
  }
  return nullptr;
}

}  // namespace simulator
