#include "Dispatch/Queue.h"

#include <algorithm>
#include <set>
#include <vector>

#include "Dispatch/Queue+Private.h"
#include "Dispatch/WorkerPool.h"
#include "ObjectiveC/Programming.h"

namespace ios {
namespace {

// The queues whose blocks the thread is inside of, outermost first.
thread_local std::vector<const DispatchQueue*> running;

// Every queue, for the clock's account of what is pending.
struct Registry {
  std::mutex mutex;
  std::set<const DispatchQueue*> queues;

  static Registry& shared() {
    static auto& registry = *new Registry;
    return registry;
  }
  Registry() {
    Clock::shared().addReporter([this] {
      std::lock_guard lock(mutex);
      std::vector<std::string> lines;
      for (const auto* queue : queues) {
        if (auto count = queue->waiting()) lines.push_back("queue " + queue->label() + ": " + std::to_string(count) + " blocks");
      }
      return lines;
    });
  }
};

}  // namespace

class DispatchQueue::Running {
 public:
  explicit Running(const DispatchQueue* queue) { running.push_back(queue); }
  ~Running() { running.pop_back(); }
  Running(const Running&) = delete;
};

DispatchQueue::DispatchQueue(Kind kind, std::string label, WorkerPool* pool)
    : kind_(kind), label_(std::move(label)), pool_(pool) {
  Registry& registry = Registry::shared();
  std::lock_guard lock(registry.mutex);
  registry.queues.insert(this);
}

DispatchQueue::~DispatchQueue() {
  Registry& registry = Registry::shared();
  std::lock_guard lock(registry.mutex);
  registry.queues.erase(this);
}

void DispatchQueue::setTarget(dispatch_queue_t target) {
  std::lock_guard lock(mutex_);
  if (kind_ != Kind::serial) programmingError("the queue \"" + label_ + "\" has no target to set");
  if (hasTurn_ || !items_.empty()) programmingError("the target of \"" + label_ + "\" was set after work was queued");
  target_ = std::move(target);
}

std::size_t DispatchQueue::waiting() const {
  std::lock_guard lock(mutex_);
  return items_.size();
}

bool DispatchQueue::isCurrent() const {
  if (kind_ == Kind::main) return isMainThread();
  for (const auto* queue : running) {
    for (const auto* q = queue; q; q = q->target_.get()) {
      if (q == this) return true;
    }
  }
  return false;
}

void DispatchQueue::run(const dispatch_block_t& block) {
  Running scope(this);
  block();
}

void DispatchQueue::async(dispatch_block_t block) {
  Clock& clock = Clock::shared();
  if (kind_ == Kind::main) {
    clock.postToMain([self = shared_from_this(), block = std::move(block)] { self->run(block); });
    return;
  }
  clock.beginWork();
  if (kind_ == Kind::global) {
    pool_->submit([self = shared_from_this(), block = std::move(block)]() mutable {
      self->run(block);
      block = nullptr;  // what it holds goes before the device may come to rest
      Clock::shared().endWork();
    });
    return;
  }
  {
    std::lock_guard lock(mutex_);
    items_.push_back({std::move(block), nullptr});
    if (std::exchange(hasTurn_, true)) return;
  }
  askForTurn();
}

void DispatchQueue::askForTurn() {
  switch (target_->kind_) {
    case Kind::global:
      target_->pool_->submit([self = shared_from_this()] { self->drain(); });
      break;
    case Kind::main:
    case Kind::serial:
      target_->async([self = shared_from_this()] { self->drain(); });
      break;
  }
}

void DispatchQueue::drain() {
  for (;;) {
    Item item;
    {
      std::lock_guard lock(mutex_);
      if (items_.empty()) {
        hasTurn_ = false;
        return;
      }
      item = std::move(items_.front());
      items_.pop_front();
    }
    if (item.waiter) {
      Clock::shared().unpark(*item.waiter);
      return;
    }
    run(item.block);
    item.block = nullptr;  // what it holds goes before the device may come to rest
    Clock::shared().endWork();
  }
}

void DispatchQueue::finishTurn() {
  {
    std::lock_guard lock(mutex_);
    if (items_.empty()) {
      hasTurn_ = false;
      return;
    }
  }
  askForTurn();
}

void DispatchQueue::sync(const dispatch_block_t& block) {
  if (kind_ != Kind::global && isCurrent()) {
    programmingError("dispatch_sync onto the queue \"" + label_ + "\" from a block of that queue can never run");
  }
  Clock& clock = Clock::shared();
  if (kind_ == Kind::global) {
    run(block);
    return;
  }
  auto parking = std::make_shared<Clock::Parking>();
  if (kind_ == Kind::main) {
    clock.postToMain([self = shared_from_this(), &block, parking] {
      self->run(block);
      Clock::shared().unpark(*parking);
    });
    WorkerPool::currentThreadBlocks();
    clock.park(parking, std::nullopt);
    WorkerPool::currentThreadResumes();
    return;
  }
  if (target_->kind_ != Kind::global) {
    // The turn has to be taken on the whole chain of targets, so the block goes through the queue like any other.
    async([&block, parking] {
      block();
      Clock::shared().unpark(*parking);
    });
    WorkerPool::currentThreadBlocks();
    clock.park(parking, std::nullopt);
    WorkerPool::currentThreadResumes();
    return;
  }
  bool free;
  {
    std::lock_guard lock(mutex_);
    free = !std::exchange(hasTurn_, true);
    if (!free) {
      clock.beginWork();
      items_.push_back({nullptr, parking});
    }
  }
  if (!free) {
    WorkerPool::currentThreadBlocks();
    clock.park(parking, std::nullopt);
    WorkerPool::currentThreadResumes();
  }
  run(block);
  finishTurn();
  if (!free) clock.endWork();
}

dispatch_queue_t dispatch_queue_create(const std::string& label) {
  auto queue = std::make_shared<DispatchQueue>(DispatchQueue::Kind::serial, label, nullptr);
  queue->setTarget(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0));
  return queue;
}

dispatch_queue_t dispatch_get_main_queue() {
  static auto& queue = *new dispatch_queue_t(
      std::make_shared<DispatchQueue>(DispatchQueue::Kind::main, "com.apple.main-thread", nullptr));
  return queue;
}

dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags) {
  if (flags != 0) programmingError("the flags of a global queue are reserved and must be 0");
  static auto& high = *new dispatch_queue_t(
      std::make_shared<DispatchQueue>(DispatchQueue::Kind::global, "high priority", &WorkerPool::high()));
  static auto& standard = *new dispatch_queue_t(
      std::make_shared<DispatchQueue>(DispatchQueue::Kind::global, "default priority", &WorkerPool::standard()));
  return priority == DISPATCH_QUEUE_PRIORITY_HIGH ? high : standard;
}

void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target) {
  queue->setTarget(target);
}

const std::string& dispatch_queue_get_label(const dispatch_queue_t& queue) { return queue->label(); }

void dispatch_async(const dispatch_queue_t& queue, dispatch_block_t block) { queue->async(std::move(block)); }

void dispatch_sync(const dispatch_queue_t& queue, const dispatch_block_t& block) { queue->sync(block); }

bool isMainThread() { return Clock::shared().isMainThread(); }

void assertMainThread(const char* who) {
  if (!isMainThread()) programmingError(std::string(who) + " belongs to the main thread");
}

void dispatch_assert_queue(const dispatch_queue_t& queue) {
  if (!queue->isCurrent()) programmingError("this belongs to the queue \"" + queue->label() + "\"");
}

}  // namespace ios
