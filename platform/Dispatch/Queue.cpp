#include "Dispatch/Queue.h"

#include <new>
#include <set>
#include <utility>
#include <vector>

#include "Base/Programming.h"
#include "Dispatch/Private/Queue.h"
#include "Dispatch/WorkerPool.h"

namespace ios {
namespace {

/// A queue whose block the thread is inside of, and the one around it.
struct Running {
  const DispatchQueue* queue;
  const Running* outer;
};
thread_local const Running* running = nullptr;

// Every queue, for the clock's account of what is pending.
class Registry {
 public:
  static Registry& shared() {
    static auto& registry = *new Registry;
    return registry;
  }
  void add(const DispatchQueue* queue) {
    MutexLock lock(mutex_);
    queues_.insert(queue);
  }
  void remove(const DispatchQueue* queue) {
    MutexLock lock(mutex_);
    queues_.erase(queue);
  }

 private:
  Registry() {
    Clock::shared().addReporter([this] { return pending(); });
  }
  std::vector<std::string> pending() {
    MutexLock lock(mutex_);
    std::vector<std::string> lines;
    for (const auto* queue : queues_) {
      if (auto line = queue->pending(); !line.empty()) lines.push_back(std::move(line));
    }
    return lines;
  }

  Mutex mutex_;
  std::set<const DispatchQueue*> queues_ IOS_GUARDED_BY(mutex_);
};

void wait(const std::shared_ptr<Clock::Parking>& parking) {
  WorkerPool::BlockedThread blocked;
  Clock::shared().park(parking, std::nullopt);
}

DispatchQueue& checked(const dispatch_queue_t& queue) {
  if (!queue) programmingError("a queue was needed and none was given");
  return *queue;
}

}  // namespace

DispatchQueue::DispatchQueue(Kind kind, std::string label, dispatch_queue_t target, WorkerPool* pool)
    : kind_(kind), label_(std::move(label)), pool_(pool), target_(std::move(target)) {
  Registry::shared().add(this);
}

DispatchQueue::~DispatchQueue() {
  Registry::shared().remove(this);
}

void DispatchQueue::setTarget(const dispatch_queue_t& target) {
  if (kind_ != Kind::serial) programmingError("the queue \"" + label_ + "\" has no target to set");
  for (const auto* queue = target.get(); queue; queue = queue->target_.get()) {
    if (queue == this) programmingError("the queue \"" + label_ + "\" cannot be its own target");
  }
  {
    MutexLock lock(mutex_);
    if (hasTurn_) programmingError("the target of \"" + label_ + "\" was set while it had work");
  }
  target_ = target ? target : dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
}

std::string DispatchQueue::pending() const {
  MutexLock lock(mutex_);
  if (!hasTurn_) return {};
  return "queue \"" + label_ + "\": busy, " + std::to_string(items_.size()) + " waiting";
}

bool DispatchQueue::isCurrent() const {
  if (kind_ == Kind::main) return isMainThread();
  for (const auto* inside = running; inside; inside = inside->outer) {
    for (const auto* queue = inside->queue; queue; queue = queue->target_.get()) {
      if (queue == this) return true;
    }
  }
  return false;
}

void DispatchQueue::run(const dispatch_block_t& block) noexcept {
  const Running here{this, running};
  running = &here;
  block();
  running = here.outer;
}

void DispatchQueue::async(dispatch_block_t block) {
  if (!block) programmingError("an empty block for the queue \"" + label_ + "\"");
  switch (kind_) {
    case Kind::main:
      Clock::shared().postToMain([this, block = std::move(block)] { run(block); });
      break;
    case Kind::global:
      pool_->submit([this, block = std::move(block)] { run(block); });
      break;
    case Kind::serial:
      enqueue({std::move(block), nullptr});
      break;
  }
}

void DispatchQueue::enqueue(Item item) {
  MutexLock lock(mutex_);
  items_.push_back(std::move(item));
  if (hasTurn_) return;
  try {
    // Under the lock: where memory runs out, nobody may rely on the turn already.
    askForTurn();
  } catch (...) {
    items_.pop_back();
    throw;
  }
  hasTurn_ = true;
}

void DispatchQueue::askForTurn() {
  auto turn = [self = shared_from_this()] { self->drain(); };
  if (target_->kind_ == Kind::global) {
    target_->pool_->submit(std::move(turn));
  } else {
    target_->async(std::move(turn));
  }
}

void DispatchQueue::drain() {
  for (;;) {
    Item item;
    {
      MutexLock lock(mutex_);
      if (items_.empty()) {
        hasTurn_ = false;
        return;
      }
      item = std::move(items_.front());
      items_.pop_front();
    }
    if (item.loan) {
      Clock::shared().unpark(*item.loan->given);
      wait(item.loan->returned);
    } else {
      run(item.block);
    }
  }
}

bool DispatchQueue::takeFreeTurn() {
  MutexLock lock(mutex_);
  return !std::exchange(hasTurn_, true);
}

void DispatchQueue::giveUpTurn() {
  {
    MutexLock lock(mutex_);
    if (items_.empty()) {
      hasTurn_ = false;
      return;
    }
  }
  try {
    askForTurn();
  } catch (const std::bad_alloc&) {
    drain();  // late is better than never: the turn is still this thread's
  }
}

void DispatchQueue::refuseDeadlock() const {
  for (const auto* queue = this; queue; queue = queue->target_.get()) {
    if (queue->kind_ == Kind::global || !queue->isCurrent()) continue;
    std::string message = "dispatch_sync onto the queue \"" + label_ + "\" can never run: ";
    if (queue != this) message += "it takes its turns on \"" + queue->label_ + "\", and ";
    programmingError(message + "the caller is on that queue");
  }
}

void DispatchQueue::sync(const dispatch_block_t& block) {
  if (!block) programmingError("an empty block for the queue \"" + label_ + "\"");
  refuseDeadlock();
  if (kind_ == Kind::global) {
    run(block);
  } else if (root().kind_ == Kind::main) {
    auto done = std::make_shared<Clock::Parking>();
    async([&block, done] {
      block();
      Clock::shared().unpark(*done);
    });
    wait(done);
  } else if (target_->kind_ == Kind::global && takeFreeTurn()) {
    run(block);
    giveUpTurn();
  } else {
    auto loan = std::make_shared<Loan>();
    enqueue({nullptr, loan});
    wait(loan->given);
    run(block);
    Clock::shared().unpark(*loan->returned);
  }
}

dispatch_queue_t dispatch_queue_create(const std::string& label) {
  return std::make_shared<DispatchQueue>(DispatchQueue::Kind::serial, label,
                                         dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0),
                                         nullptr);
}

dispatch_queue_t dispatch_get_main_queue() {
  static auto& queue = *new dispatch_queue_t(
      std::make_shared<DispatchQueue>(DispatchQueue::Kind::main, "com.apple.main-thread", nullptr, nullptr));
  return queue;
}

dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags) {
  if (flags != 0) programmingError("the flags of a global queue are reserved and must be 0");
  static auto& high = *new dispatch_queue_t(std::make_shared<DispatchQueue>(
      DispatchQueue::Kind::global, "high priority", nullptr, &WorkerPool::high()));
  static auto& standard = *new dispatch_queue_t(std::make_shared<DispatchQueue>(
      DispatchQueue::Kind::global, "default priority", nullptr, &WorkerPool::standard()));
  return priority == DISPATCH_QUEUE_PRIORITY_HIGH ? high : standard;
}

void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target) {
  checked(queue).setTarget(target);
}

void dispatch_async(const dispatch_queue_t& queue, dispatch_block_t block) {
  checked(queue).async(std::move(block));
}

void dispatch_sync(const dispatch_queue_t& queue, const dispatch_block_t& block) {
  checked(queue).sync(block);
}

bool isMainThread() {
  return Clock::shared().isMainThread();
}

void assertMainThread(const char* who) {
  if (!isMainThread()) programmingError(std::string(who) + " belongs to the main thread");
}

bool isOnQueue(const dispatch_queue_t& queue) {
  return checked(queue).isCurrent();
}

void dispatch_assert_queue(const dispatch_queue_t& queue) {
  if (!isOnQueue(queue)) programmingError("this belongs to the queue \"" + queue->label() + "\"");
}

}  // namespace ios
