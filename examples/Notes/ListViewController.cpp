#include "ListViewController.h"

#include "ComposeViewController.h"
#include "DetailViewController.h"
#include "UIKit/UINavigationController.h"

namespace Notes {

using namespace ios;

ListViewController::ListViewController(std::shared_ptr<NoteStore> store) : store_(std::move(store)) {
  setTitle("Notes");
}

MethodList ListViewController::methods() {
  return {{"openNote:", &ListViewController::openNote}, {"compose", &ListViewController::compose}};
}

void ListViewController::viewDidLoad() {
  view()->setBackgroundColor(paperColor());
  scroll_ = std::make_shared<UIScrollView>();
  scroll_->setAccessibilityIdentifier("notes");
  view()->addSubview(scroll_);
  compose_ = std::make_shared<UIButton>();
  compose_->setTitle("New note");
  compose_->setAccessibilityIdentifier("new-note");
  compose_->setTitleColor(UIColor::whiteColor());
  compose_->setFont(UIFont::boldSystemFontOfSize(16));
  compose_->setBackgroundColor(tintColor());
  compose_->layer()->cornerRadius = 22;
  compose_->addTarget(weak_from_this().lock(), "compose", UIControlEventTouchUpInside);
  view()->addSubview(compose_);
}

void ListViewController::viewWillAppear(bool animated) {
  UIViewController::viewWillAppear(animated);
  rebuild();
}

void ListViewController::rebuild() {
  for (const auto& row : rows_) row->removeFromSuperview();
  rows_.clear();
  for (std::size_t i = 0; i < store_->notes().size(); ++i) {
    auto row = std::make_shared<NoteRow>(store_->notes()[i]);
    row->setTag(static_cast<long>(i));
    row->setAccessibilityIdentifier("note");
    row->addTarget(weak_from_this().lock(), "openNote:", UIControlEventTouchUpInside);
    scroll_->addSubview(row);
    rows_.push_back(std::move(row));
  }
  view()->setNeedsLayout();
}

void ListViewController::viewWillLayoutSubviews() {
  const CGRect all = view()->bounds();
  scroll_->setFrame(all);
  CGFloat y = 0;
  for (const auto& row : rows_) {
    row->setFrame(CGRectMake(0, y, all.width(), NoteRow::kHeight));
    y += NoteRow::kHeight;
  }
  scroll_->setContentSize({all.width(), y + 76});  // the last note stays clear of the button
  compose_->setFrame(CGRectMake(all.width() - 136, all.height() - 60, 120, 44));
}

void ListViewController::openNote(const id& row) {
  const auto tapped = std::dynamic_pointer_cast<NoteRow>(row);
  if (!tapped) return;
  const Note& note = store_->notes()[static_cast<std::size_t>(tapped->tag())];
  navigationController()->pushViewController(std::make_shared<DetailViewController>(note), true);
}

void ListViewController::compose() {
  auto compose = std::make_shared<ComposeViewController>();
  compose->onAdd = [weak = std::weak_ptr(sharedAs<ListViewController>())](Note note) {
    const auto self = weak.lock();
    if (!self) return;
    self->store_->add(std::move(note));
    self->rebuild();
  };
  presentViewController(compose, true);
}

}  // namespace Notes
