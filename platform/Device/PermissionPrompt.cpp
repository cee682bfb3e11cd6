#include "Device/PermissionPrompt.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "Base/Mutex.h"
#include "Device/Device.h"
#include "Dispatch/Queue.h"

namespace ios {
namespace {

using Answer = std::function<void(bool)>;

/// The queue on which answers are delivered: off the main thread, in the order in which they were given.
const dispatch_queue_t& answerQueue() {
  static auto& queue = *new dispatch_queue_t(dispatch_queue_create("permission answers"));
  return queue;
}

/// Shows one question after another and delivers the answers. The questions live on the main thread.
class Prompts {
 public:
  static Prompts& shared() {
    static auto& prompts = *new Prompts;
    return prompts;
  }

  void setPresenter(PermissionPresenter presenter) {
    MutexLock lock(mutex_);
    presenter_ = std::move(presenter);
  }

  /// Main thread.
  void ask(const PermissionQuestion& question, Answer answer) {
    assertMainThread("a permission prompt");
    const auto same = [&](const Open& open) { return open.question.service == question.service; };
    if (const auto open = std::find_if(open_.begin(), open_.end(), same); open != open_.end()) {
      open->answers.push_back(std::move(answer));
      return;
    }
    open_.push_back({question, {std::move(answer)}});
    if (open_.size() == 1) showFirst();
  }

 private:
  struct Open {
    PermissionQuestion question;
    std::vector<Answer> answers;
  };

  void showFirst() {
    // An earlier question may have been about the same, or the settings may have changed meanwhile.
    const Permission known = Device::current().permission(open_.front().question.service);
    if (known != Permission::notDetermined) {
      finishFirst(known == Permission::authorized);
      return;
    }
    PermissionPresenter presenter;
    {
      MutexLock lock(mutex_);
      presenter = presenter_;
    }
    if (!presenter) {
      finishFirst(false);
      return;
    }
    const auto answered = std::make_shared<std::atomic<bool>>(false);
    presenter(open_.front().question, [this, answered](bool granted) {
      if (answered->exchange(true)) return;
      dispatch_async(dispatch_get_main_queue(), [this, granted] {
        Device::current().setPermission(open_.front().question.service,
                                        granted ? Permission::authorized : Permission::denied);
        finishFirst(granted);
      });
    });
  }

  void finishFirst(bool granted) {
    const Open finished = std::move(open_.front());
    open_.erase(open_.begin());
    for (const auto& answer : finished.answers) {
      dispatch_async(answerQueue(), [answer, granted] { answer(granted); });
    }
    if (!open_.empty()) showFirst();
  }

  Mutex mutex_;
  PermissionPresenter presenter_ IOS_GUARDED_BY(mutex_);
  std::vector<Open> open_;  // the first is shown
};

}  // namespace

void setPermissionPresenter(PermissionPresenter presenter) {
  Prompts::shared().setPresenter(std::move(presenter));
}

void requestPermission(const PermissionQuestion& question, std::function<void(bool granted)> answer) {
  if (!answer) answer = [](bool) {};
  const Permission known = Device::current().permission(question.service);
  if (known != Permission::notDetermined) {
    dispatch_async(answerQueue(),
                   [answer = std::move(answer), known] { answer(known == Permission::authorized); });
    return;
  }
  dispatch_async(dispatch_get_main_queue(),
                 [question, answer = std::move(answer)] { Prompts::shared().ask(question, answer); });
}

}  // namespace ios
