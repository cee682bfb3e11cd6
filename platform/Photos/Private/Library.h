#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Device/Files.h"
#include "Dispatch/Queue.h"
#include "Photos/Private/Changes.h"
#include "Photos/Private/LibraryReader.h"

namespace ios::photos {

template <class Value = void>
using LibraryResult = Result<Value, std::shared_ptr<NSError>>;

/// The library of this process's device. What changes it runs on `queue()`, one transaction after another;
/// `reader()` is for any thread.
class Library {
 public:
  /// Made with its first use, which also puts the library on disk in order, in the background.
  static Library& shared();

  const dispatch_queue_t& queue() const { return queue_; }
  /// Where completions are called, in the order of the transactions.
  const dispatch_queue_t& completionQueue() const { return completionQueue_; }
  LibraryReader& reader() { return reader_; }

  /// All of it or nothing. On `queue()`.
  [[nodiscard]] LibraryResult<> apply(const Changes& changes);
  /// A UUID that no object has, in any process. On `queue()`.
  LibraryResult<std::string> newUUID();

 private:
  explicit Library(MediaFolder folder);

  struct Incoming;
  LibraryResult<> open() IOS_REQUIRES(mutex_);
  LibraryResult<> openChecked() IOS_REQUIRES(mutex_);
  LibraryResult<> sweep() IOS_REQUIRES(mutex_);
  bool isStillThere() const IOS_REQUIRES(mutex_);
  LibraryResult<std::vector<Incoming>> takeIn(const Changes& changes) const;
  /// The numbers of the movies that no longer belong to an asset.
  LibraryResult<std::vector<std::int64_t>> write(const Changes& changes, std::vector<Incoming>& incoming)
      IOS_REQUIRES(mutex_);
  LibraryResult<> place(Incoming& incoming) IOS_REQUIRES(mutex_);
  LibraryResult<> add(const Changes::Addition& addition) IOS_REQUIRES(mutex_);
  /// Runs a statement. A failure ends the transaction, and a damaged library is checked thoroughly when it is
  /// next opened.
  LibraryResult<Database::Rows> run(const char* operation, const char* statement,
                                    const std::vector<Database::Value>& parameters = {}) IOS_REQUIRES(mutex_);
  void close();

  const MediaFolder folder_;
  const dispatch_queue_t queue_, completionQueue_;
  LibraryReader reader_;
  Mutex mutex_;                                 // held by `queue()`'s blocks, and when the process ends
  bool closed_ IOS_GUARDED_BY(mutex_) = false;  // the process is ending
  std::unique_ptr<Database> database_ IOS_GUARDED_BY(mutex_);
  dev_t device_ IOS_GUARDED_BY(mutex_) = 0;
  ino_t inode_ IOS_GUARDED_BY(mutex_) = 0;
};

tl::unexpected<std::shared_ptr<NSError>> failed(const FileError& error);
tl::unexpected<std::shared_ptr<NSError>> failed(const DatabaseFailure& failure);

}  // namespace ios::photos
