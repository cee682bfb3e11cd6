#include "DetailViewController.h"

namespace Notes {

using namespace ios;

DetailViewController::DetailViewController(Note note) : note_(std::move(note)) {
  setTitle("Note");
}

void DetailViewController::viewDidLoad() {
  view()->setBackgroundColor(paperColor());
  scroll_ = std::make_shared<UIScrollView>();
  view()->addSubview(scroll_);
  const auto label = [this](const std::string& text, std::shared_ptr<UIFont> font,
                            std::shared_ptr<UIColor> color) {
    auto made = std::make_shared<UILabel>();
    made->setText(text);
    made->setFont(std::move(font));
    made->setTextColor(std::move(color));
    made->setNumberOfLines(0);
    scroll_->addSubview(made);
    return made;
  };
  date_ = label(note_.date, UIFont::systemFontOfSize(13), faintColor());
  date_->setTextAlignment(TextAlignment::center);
  title_ = label(note_.title, UIFont::boldSystemFontOfSize(26), inkColor());
  body_ = label(note_.body, UIFont::systemFontOfSize(18), inkColor());
  mark_ = std::make_shared<UIView>();
  mark_->setBackgroundColor(UIColor::colorWithHex(note_.color));
  mark_->layer()->cornerRadius = 2;
  scroll_->addSubview(mark_);
}

void DetailViewController::viewWillLayoutSubviews() {
  const CGFloat margin = 20, width = view()->bounds().width() - 2 * margin;
  scroll_->setFrame(view()->bounds());
  date_->setFrame(CGRectMake(margin, 14, width, 18));
  const CGFloat titleHeight = title_->sizeThatFits({width, 0}).height;
  title_->setFrame(CGRectMake(margin, 46, width, titleHeight));
  mark_->setFrame(CGRectMake(margin, 46 + titleHeight + 10, 44, 4));
  const CGFloat top = mark_->frame().maxY() + 18, bodyHeight = body_->sizeThatFits({width, 0}).height;
  body_->setFrame(CGRectMake(margin, top, width, bodyHeight));
  scroll_->setContentSize({view()->bounds().width(), top + bodyHeight + margin});
}

}  // namespace Notes
