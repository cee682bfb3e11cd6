#pragma once

#include <functional>
#include <memory>
#include <string>

namespace ios {

class DispatchQueue;
/// A reference to a queue. Queues live as long as a reference to them, or work on them, does.
using dispatch_queue_t = std::shared_ptr<DispatchQueue>;
/// A block: a closure without arguments or result, run once and then destroyed on the thread that ran it. One
/// that lets an exception out ends the process.
using dispatch_block_t = std::function<void()>;

enum : long {
  DISPATCH_QUEUE_PRIORITY_HIGH = 2,
  DISPATCH_QUEUE_PRIORITY_DEFAULT = 0,
};

/// A new serial queue: its blocks run one at a time, in the order of submission, on some worker thread. It
/// targets the global queue of default priority. `label` names it in messages.
dispatch_queue_t dispatch_queue_create(const std::string& label);
/// The queue of the main thread.
dispatch_queue_t dispatch_get_main_queue();
/// The concurrent queue of a priority; `flags` must be 0. Any priority but high counts as default.
dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);
/// Where `queue` takes its turns from now on: a global queue, the main queue, or another serial queue (empty:
/// the global queue of default priority). To be called before the first submission.
void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target);

/// Queues `block` and returns.
void dispatch_async(const dispatch_queue_t& queue, dispatch_block_t block);
/// Queues `block` behind those already there and returns when it has run: on the calling thread, or on the main
/// thread if that is where the queue takes its turns. A submission that could never run, onto a queue that
/// the calling thread is running on or one that takes its turns there, stops the process with a message that
/// names the queue.
void dispatch_sync(const dispatch_queue_t& queue, const dispatch_block_t& block);

/// True on the process's main thread.
bool isMainThread();
/// Stops the process with a message that names `who`, unless on the main thread.
void assertMainThread(const char* who);
/// Whether the calling thread is inside a block of `queue`, or of a queue that takes its turns there.
bool isOnQueue(const dispatch_queue_t& queue);
/// Stops the process with a message unless the calling thread is on `queue`.
void dispatch_assert_queue(const dispatch_queue_t& queue);

}  // namespace ios
