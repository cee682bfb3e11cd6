#include "ComposeViewController.h"

namespace Notes {
namespace {

using namespace ios;

const std::vector<Note>& beginnings() {
  static const std::vector<Note> all = {
      {"Shopping list", "Now", "Bread, milk, and whatever smells good.", 0x5BA55B},
      {"Meeting", "Now", "Who was there, what was decided, who does what until when.", 0x3E8ED0},
      {"Idea", "Now", "Before it is gone:", 0xD9822B},
  };
  return all;
}

}  // namespace

ComposeViewController::ComposeViewController() {
  setTitle("New note");
}

MethodList ComposeViewController::methods() {
  return {{"choose:", &ComposeViewController::choose}, {"cancel", &ComposeViewController::cancel}};
}

void ComposeViewController::viewDidLoad() {
  const id self = weak_from_this().lock();
  view()->setBackgroundColor(UIColor::colorWithHex(0xF4F1E8));
  bar_ = std::make_shared<UIView>();
  bar_->setBackgroundColor(paperColor());
  line_ = std::make_shared<UIView>();
  line_->setBackgroundColor(lineColor());
  heading_ = std::make_shared<UILabel>();
  heading_->setText("New note");
  heading_->setFont(UIFont::boldSystemFontOfSize(17));
  heading_->setTextColor(inkColor());
  heading_->setTextAlignment(TextAlignment::center);
  cancel_ = std::make_shared<UIButton>();
  cancel_->setTitle("Cancel");
  cancel_->setTitleColor(tintColor());
  cancel_->addTarget(self, "cancel", UIControlEventTouchUpInside);
  hint_ = std::make_shared<UILabel>();
  hint_->setText("Begin with");
  hint_->setFont(UIFont::systemFontOfSize(14));
  hint_->setTextColor(faintColor());
  for (const std::shared_ptr<UIView>& part :
       {bar_, line_, std::static_pointer_cast<UIView>(heading_), std::static_pointer_cast<UIView>(cancel_),
        std::static_pointer_cast<UIView>(hint_)}) {
    view()->addSubview(part);
  }
  for (std::size_t i = 0; i < beginnings().size(); ++i) {
    auto choice = std::make_shared<UIButton>();
    choice->setTitle(beginnings()[i].title);
    choice->setTitleColor(UIColor::colorWithHex(beginnings()[i].color));
    choice->setFont(UIFont::boldSystemFontOfSize(18));
    choice->setBackgroundColor(paperColor());
    choice->layer()->cornerRadius = 12;
    choice->setTag(static_cast<long>(i));
    choice->addTarget(self, "choose:", UIControlEventTouchUpInside);
    view()->addSubview(choice);
    choices_.push_back(std::move(choice));
  }
}

void ComposeViewController::viewWillLayoutSubviews() {
  const CGFloat width = view()->bounds().width(), statusBar = 20, barHeight = statusBar + 44;
  bar_->setFrame(CGRectMake(0, 0, width, barHeight));
  line_->setFrame(CGRectMake(0, barHeight, width, 0.5));
  heading_->setFrame(CGRectMake(100, statusBar, width - 200, 44));
  cancel_->setFrame(CGRectMake(8, statusBar, 84, 44));
  hint_->setFrame(CGRectMake(20, barHeight + 24, width - 40, 20));
  CGFloat y = barHeight + 54;
  for (const auto& choice : choices_) {
    choice->setFrame(CGRectMake(20, y, width - 40, 64));
    y += 76;
  }
}

void ComposeViewController::choose(const id& button) {
  const auto chosen = std::dynamic_pointer_cast<UIButton>(button);
  if (chosen && onAdd) onAdd(beginnings()[static_cast<std::size_t>(chosen->tag())]);
  dismissViewControllerAnimated(true);
}

void ComposeViewController::cancel() {
  dismissViewControllerAnimated(true);
}

}  // namespace Notes
