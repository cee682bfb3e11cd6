#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Foundation/NSError.h"
#include "Photos/Private/Identifier.h"

namespace ios::photos {

/// The changes that a transaction's block requested. Objects are named by their UUIDs.
struct Changes {
  struct NewAsset {
    std::string uuid;
    std::filesystem::path source;
  };
  struct NewAlbum {
    std::string uuid, title;
  };
  struct Addition {
    std::string album, asset;
  };
  std::vector<NewAsset> newAssets;
  std::vector<NewAlbum> newAlbums;
  std::vector<Addition> additions;
  std::vector<std::string> deletedAssets;
  /// Why a change could not even be requested; the transaction fails with this.
  std::shared_ptr<NSError> failure;

  bool isEmpty() const {
    return newAssets.empty() && newAlbums.empty() && additions.empty() && deletedAssets.empty();
  }
  /// A new object's UUID; empty after a failure, which is kept.
  std::string newUUID();

  /// The transaction whose block the calling thread is running; without one the process stops with a message
  /// that names `who`.
  static Changes& current(const char* who);
  /// Makes it the current one of this thread while it lives.
  class Scope {
   public:
    explicit Scope(Changes& changes);
    ~Scope();
    Scope(const Scope&) = delete;
  };
};

}  // namespace ios::photos
