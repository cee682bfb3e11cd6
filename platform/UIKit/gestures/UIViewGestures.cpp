#include <algorithm>

#include "UIKit/UIGestureRecognizer.h"
#include "UIKit/UIView.h"

namespace ios {

void UIView::addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  if (!recognizer) return;
  const auto kept = recognizer;  // the caller's reference may be an element of the list it is taken from
  if (auto old = kept->view()) old->removeGestureRecognizer(kept);
  recognizers_.push_back(kept);
  kept->attach(this);
}

void UIView::removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  const auto found = std::find(recognizers_.begin(), recognizers_.end(), recognizer);
  if (found == recognizers_.end()) return;
  const auto removed = *found;
  recognizers_.erase(found);
  removed->attach(nullptr);
}

void UIView::detachGestureRecognizers() {
  for (const auto& recognizer : recognizers_) recognizer->attach(nullptr);
}

}  // namespace ios
