#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"

namespace ios {

class WorkerPool;

/// A queue: serial ones own no thread, they take turns on their target. The main queue and the global queues are
/// the ends of every chain of targets.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
 public:
  enum class Kind { serial, main, global };
  DispatchQueue(Kind kind, std::string label, WorkerPool* pool);
  ~DispatchQueue();

  void setTarget(dispatch_queue_t target);
  void async(dispatch_block_t block);
  void sync(const dispatch_block_t& block);

  const std::string& label() const { return label_; }
  std::size_t waiting() const;
  /// Whether the calling thread is inside a block of this queue, or of one that takes its turns here.
  bool isCurrent() const;

 private:
  /// What a queue holds: a block to run, or a thread waiting in `sync` that runs its own.
  struct Item {
    dispatch_block_t block;
    std::shared_ptr<Clock::Parking> waiter;
  };
  class Running;

  void run(const dispatch_block_t& block);
  /// Takes items until there is none or a waiting thread has been given the turn.
  void drain();
  /// Gives the turn up: to nobody, or by asking the target for another.
  void finishTurn();
  void askForTurn();

  const Kind kind_;
  const std::string label_;
  WorkerPool* const pool_;
  dispatch_queue_t target_;

  mutable std::mutex mutex_;
  std::deque<Item> items_;
  bool hasTurn_ = false;
};

}  // namespace ios
