#pragma once

#include <deque>
#include <memory>
#include <string>

#include "Base/Mutex.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"

namespace ios {

class WorkerPool;

/// A queue: serial ones own no thread, they take turns on their target. The main queue and the global queues
/// are the ends of every chain of targets.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
 public:
  enum class Kind { serial, main, global };
  /// `target` is for serial queues, `pool` for global ones.
  DispatchQueue(Kind kind, std::string label, dispatch_queue_t target, WorkerPool* pool);
  ~DispatchQueue();

  void setTarget(const dispatch_queue_t& target);
  void async(dispatch_block_t block);
  void sync(const dispatch_block_t& block);

  const std::string& label() const { return label_; }
  /// What the queue has to do, for people; empty when it has nothing to do.
  std::string pending() const;
  /// Whether the calling thread is inside a block of this queue, or of one that takes its turns here.
  bool isCurrent() const;

 private:
  /// The queue's turn, lent to a thread that waits in `sync` to run a block of its own.
  struct Loan {
    std::shared_ptr<Clock::Parking> given = std::make_shared<Clock::Parking>();
    std::shared_ptr<Clock::Parking> returned = std::make_shared<Clock::Parking>();
  };
  struct Item {
    dispatch_block_t block;
    std::shared_ptr<Loan> loan;  // instead of a block
  };

  const DispatchQueue& root() const { return target_ ? target_->root() : *this; }
  void refuseDeadlock() const;
  /// An exception that leaves a block ends the process: nobody is there to catch it.
  void run(const dispatch_block_t& block) noexcept;
  void enqueue(Item item);
  void askForTurn();
  /// A turn: runs items until none is left.
  void drain();
  bool takeFreeTurn();
  void giveUpTurn();

  const Kind kind_;
  const std::string label_;
  WorkerPool* const pool_;
  /// Not guarded: set before the first submission, and only read after.
  dispatch_queue_t target_;

  mutable Mutex mutex_;
  std::deque<Item> items_ IOS_GUARDED_BY(mutex_);
  /// The queue has a turn or has asked for one.
  bool hasTurn_ IOS_GUARDED_BY(mutex_) = false;
};

}  // namespace ios
