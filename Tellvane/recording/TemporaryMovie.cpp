#include "recording/TemporaryMovie.h"

#include <filesystem>
#include <set>

#include "Base/Mutex.h"
#include "info/TLVConstants.h"

namespace tellvane {
namespace {

struct Names {
  Mutex mutex;
  std::set<std::string> taken IOS_GUARDED_BY(mutex);

  static Names& shared() {
    static auto& names = *new Names;
    return names;
  }
};

}  // namespace

TemporaryMovie::TemporaryMovie() : path_(TLV_SCREEN_RECORDING_PATH()) {
  const std::filesystem::path usual = path_;
  Names& names = Names::shared();
  MutexLock lock(names.mutex);
  for (int count = 2; !names.taken.insert(path_).second; ++count) {
    const std::string name = usual.stem().string() + "-" + std::to_string(count);
    path_ = (usual.parent_path() / (name + usual.extension().string())).string();
  }
}

TemporaryMovie::~TemporaryMovie() {
  Names& names = Names::shared();
  MutexLock lock(names.mutex);
  names.taken.erase(path_);
}

}  // namespace tellvane
