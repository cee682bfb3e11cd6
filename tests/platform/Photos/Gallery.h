#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Foundation/NSError.h"
#include "Photos/PHAsset.h"
#include "Photos/PHAssetCollection.h"
#include "support/ScratchFolder.h"

namespace testing_support {

/// A device in virtual time that allows the use of its photo library. One per process.
class Gallery {
 public:
  Gallery();

  std::filesystem::path device() const { return scratch.path() / "device"; }
  std::filesystem::path media() const { return device() / "Media"; }
  std::filesystem::path movie(int number) const;
  /// A whole movie to save.
  const std::filesystem::path& sample() const { return sample_; }

  /// Runs a transaction to its end; returns its error, if any.
  std::shared_ptr<ios::NSError> perform(const std::function<void()>& changes) const;
  std::shared_ptr<ios::PHAssetCollection> makeAlbum(const std::string& title = "Tellvane") const;
  /// Saves a movie, into the album if there is one; the asset's identifier, or none.
  std::optional<std::string> save(const std::filesystem::path& file,
                                  const std::shared_ptr<ios::PHAssetCollection>& album = nullptr,
                                  std::shared_ptr<ios::NSError>* error = nullptr) const;

  /// What another program reads in the library, one line per row.
  std::string query(const std::string& statement) const;
  /// The identifiers of an album's assets, in their order, as another program reads them.
  std::vector<std::string> members(const ios::PHAssetCollection& album) const;
  /// Names of all that lies in the library's folder, without the database's own temporary files.
  std::vector<std::string> files() const;
  /// Fails the test unless each asset has its complete movie, and there is no other file of the library.
  void expectWhole() const;
  /// The same, but for files without an asset.
  void expectNoHalfAsset() const;

  ScratchFolder scratch;

 private:
  std::filesystem::path sample_;
};

struct Ended {
  int status = -1;  // exit status, or 128 + the signal
  std::string out;
};
/// A process that saves (Saver.cpp) on the gallery's device.
class SavingProcess {
 public:
  /// Virtual time, unless `real`.
  SavingProcess(const Gallery& gallery, int count, int step = 0, bool real = false);
  Ended wait();

 private:
  std::filesystem::path output_;
  int process_ = -1;
};

}  // namespace testing_support
