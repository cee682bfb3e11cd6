#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Device/Files.h"
#include "Dispatch/Queue.h"
#include "Photos/Changes+Private.h"
#include "Photos/LibraryReader+Private.h"

namespace ios::photos {

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

  using Failure = std::shared_ptr<NSError>;
  /// All of it or nothing; empty when it happened. On `queue()`.
  [[nodiscard]] Failure apply(const Changes& changes);
  /// A UUID that no object has, in any process; empty with `failure` set. On `queue()`.
  std::string newUUID(Failure& failure);

 private:
  explicit Library(MediaFolder folder);

  struct Incoming;
  Failure open() IOS_REQUIRES(mutex_);
  Failure openChecked() IOS_REQUIRES(mutex_);
  Failure sweep() IOS_REQUIRES(mutex_);
  bool isStillThere() const IOS_REQUIRES(mutex_);
  Failure takeIn(const Changes& changes, std::vector<Incoming>& incoming) const;
  Failure write(const Changes& changes, std::vector<Incoming>& incoming, std::vector<std::int64_t>& removed)
      IOS_REQUIRES(mutex_);
  Failure place(Incoming& incoming) IOS_REQUIRES(mutex_);
  Failure add(const Changes::Addition& addition) IOS_REQUIRES(mutex_);
  /// After a failure; a damaged library is looked at closely when it is next opened.
  Failure refused(const DatabaseFailure& failure) IOS_REQUIRES(mutex_);
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

Library::Failure failureOf(const FileError& error);
Library::Failure failureOf(const DatabaseFailure& failure);

}  // namespace ios::photos
