#include "UIKit/Private/NibViews.h"

#include <algorithm>
#include <array>

#include "UIKit/Private/Chrome.h"
#include "UIKit/UIImageView.h"

namespace ios {
namespace {

constexpr double kLargestRadius = 1'000;

/// Attributes that only the editor uses, or features that are not supported here and have no visible effect.
bool isSilent(const NibElement& element) {
  static constexpr std::array kNames{"rect",
                                     "autoresizingMask",
                                     "subviews",
                                     "connections",
                                     "nil",
                                     "point",
                                     "size",
                                     "viewLayoutGuide",
                                     "freeformSimulatedSizeMetrics",
                                     "simulatedStatusBarMetrics",
                                     "simulatedOrientationMetrics"};
  return std::find(kNames.begin(), kNames.end(), element.name) != kNames.end();
}

unsigned autoresizingMask(const NibElement& element) {
  struct Flag {
    const char* name;
    unsigned bit;
  };
  static constexpr std::array kFlags{Flag{"flexibleMinX", UIViewAutoresizingFlexibleLeftMargin},
                                     Flag{"widthSizable", UIViewAutoresizingFlexibleWidth},
                                     Flag{"flexibleMaxX", UIViewAutoresizingFlexibleRightMargin},
                                     Flag{"flexibleMinY", UIViewAutoresizingFlexibleTopMargin},
                                     Flag{"heightSizable", UIViewAutoresizingFlexibleHeight},
                                     Flag{"flexibleMaxY", UIViewAutoresizingFlexibleBottomMargin}};
  unsigned mask = UIViewAutoresizingNone;
  for (const auto& flag : kFlags) {
    if (element.yes(flag.name)) mask |= flag.bit;
  }
  return mask;
}

CGRect frameOf(const NibElement& element, NibReading& reading) {
  const NibElement* rect = element.child("rect");
  const auto x = rect ? rect->number("x") : std::nullopt, y = rect ? rect->number("y") : std::nullopt;
  const auto width = rect ? rect->number("width") : std::nullopt;
  const auto height = rect ? rect->number("height") : std::nullopt;
  if (x && y && width && height && *width >= 0 && *height >= 0) return CGRectMake(*x, *y, *width, *height);
  reading.report(described(element) + " has no frame");
  return CGRectZero;
}

/// Moves `view` to its mirror image within `width`, and lets it stick to the other side.
void mirror(UIView& view, CGFloat width) {
  view.setFrame(chrome::mirrored(view.frame(), width, true));
  constexpr unsigned kLeft = UIViewAutoresizingFlexibleLeftMargin,
                     kRight = UIViewAutoresizingFlexibleRightMargin;
  const unsigned mask = view.autoresizingMask();
  view.setAutoresizingMask((mask & ~(kLeft | kRight)) | (mask & kLeft ? kRight : 0U) |
                           (mask & kRight ? kLeft : 0U));
}

class ViewMaker {
 public:
  ViewMaker(const NibElement& element, NibReading& reading) : element_(element), reading_(reading) {}

  std::shared_ptr<UIView> make() {
    if (!create()) {
      reading_.report(described(element_) + " is not a known element");
      return nullptr;
    }
    if (const std::string* name = element_.find("customClass"))
      reading_.report("unknown class " + *name + " of " + described(element_));
    common();
    for (const auto& inside : element_.children) {
      const bool taken = (label_ && ofLabel(inside)) || (button_ && ofButton(inside)) || ofView(inside);
      if (!taken && !isSilent(inside))
        reading_.report(described(inside) + " inside " + described(element_) + " is not known");
    }
    if (const NibElement* subviews = element_.child("subviews")) {
      for (const auto& inside : subviews->children) {
        const auto subview = makeNibView(inside, reading_);
        if (!subview) continue;
        if (reading_.mirrored) mirror(*subview, view_->bounds().width());
        view_->addSubview(subview);
      }
    }
    return view_;
  }

 private:
  bool create() {
    if (element_.name == "view") {
      view_ = std::make_shared<UIView>();
    } else if (element_.name == "label") {
      view_ = label_ = std::make_shared<UILabel>();
    } else if (element_.name == "button") {
      view_ = button_ = std::make_shared<UIButton>();
    } else if (element_.name == "imageView") {
      auto picture = std::make_shared<UIImageView>();
      const std::string mode = element_.text("contentMode");
      if (mode == "scaleAspectFit") picture->setContentMode(UIViewContentMode::scaleAspectFit);
      if (mode == "scaleAspectFill") picture->setContentMode(UIViewContentMode::scaleAspectFill);
      if (const std::string* name = element_.find("image")) picture->setImage(reading_.image(*name));
      view_ = std::move(picture);
    }
    return view_ != nullptr;
  }

  void common() {
    if (const std::string* identifier = element_.find("id")) {
      if (!reading_.objects.emplace(*identifier, view_).second)
        reading_.report(described(element_) + " has the identifier of another");
    }
    if (const NibElement* list = element_.child("connections")) reading_.connections.push_back({view_, list});
    view_->setFrame(frameOf(element_, reading_));
    if (const NibElement* mask = element_.child("autoresizingMask"))
      view_->setAutoresizingMask(autoresizingMask(*mask));
    view_->setHidden(element_.yes("hidden"));
    view_->setAlpha(std::clamp(element_.number("alpha").value_or(1), 0.0, 1.0));
    view_->setTag(static_cast<long>(element_.number("tag").value_or(0)));
    view_->setClipsToBounds(element_.yes("clipsSubviews") || element_.yes("clipsToBounds"));
    view_->setMultipleTouchEnabled(element_.yes("multipleTouchEnabled"));
    if (element_.text("userInteractionEnabled") == "NO") view_->setUserInteractionEnabled(false);
    if (label_) ofLabel();
    if (button_) button_->setEnabled(element_.text("enabled") != "NO");
  }

  /// Attributes of a label.
  void ofLabel() {
    label_->setText(localized("text", element_.text("text")));
    label_->setNumberOfLines(static_cast<int>(element_.number("numberOfLines").value_or(1)));
    if (element_.yes("adjustsFontSizeToFit"))
      label_->setMinimumScaleFactor(element_.number("minimumScaleFactor").value_or(0));
    const std::string alignment = element_.text("textAlignment");
    label_->setTextAlignment(alignment == "left"        ? TextAlignment::left
                             : alignment == "center"    ? TextAlignment::center
                             : alignment == "right"     ? TextAlignment::right
                             : alignment == "justified" ? TextAlignment::justified
                                                        : TextAlignment::natural);
  }

  bool ofView(const NibElement& inside) {
    const std::string key = inside.text("key");
    if (inside.name == "color" && key == "backgroundColor") {
      if (auto color = nibColor(inside, reading_)) view_->setBackgroundColor(std::move(color));
    } else if (inside.name == "accessibility") {
      view_->setAccessibilityLabel(inside.text("label"));
    } else if (inside.name == "userDefinedRuntimeAttributes") {
      for (const auto& attribute : inside.children) runtimeAttribute(attribute);
    } else {
      return false;
    }
    return true;
  }

  bool ofLabel(const NibElement& inside) {
    if (inside.name == "fontDescription") {
      if (auto font = nibFont(inside, reading_)) label_->setFont(std::move(font));
    } else if (inside.name == "color" && inside.text("key") == "textColor") {
      if (auto color = nibColor(inside, reading_)) label_->setTextColor(std::move(color));
    } else {
      return false;
    }
    return true;
  }

  bool ofButton(const NibElement& inside) {
    if (inside.name == "fontDescription") {
      if (auto font = nibFont(inside, reading_)) button_->setFont(std::move(font));
    } else if (inside.name == "state" && inside.text("key") == "normal") {
      button_->setTitle(localized("normalTitle", inside.text("title")));
      if (const NibElement* color = inside.child("color"); color && color->text("key") == "titleColor") {
        if (auto value = nibColor(*color, reading_)) button_->setTitleColor(std::move(value));
      }
    } else {
      return false;
    }
    return true;
  }

  void runtimeAttribute(const NibElement& attribute) {
    const std::string path = attribute.text("keyPath");
    if (path == "layer.cornerRadius" && attribute.children.size() == 1) {
      const auto radius = attribute.children.front().number("value");
      if (radius && *radius >= 0 && *radius <= kLargestRadius) {
        view_->layer()->cornerRadius = *radius;
        return;
      }
    }
    reading_.report("\"" + path + "\" of " + described(element_) + " cannot be set");
  }

  std::string localized(const char* property, const std::string& base) {
    const std::string* identifier = element_.find("id");
    return identifier ? reading_.localized(*identifier + "." + property, base) : base;
  }

  const NibElement& element_;
  NibReading& reading_;
  std::shared_ptr<UIView> view_;
  std::shared_ptr<UILabel> label_;    // the view, if it is one
  std::shared_ptr<UIButton> button_;  // the view, if it is one
};

}  // namespace

std::shared_ptr<UIView> makeNibView(const NibElement& element, NibReading& reading) {
  return ViewMaker(element, reading).make();
}

}  // namespace ios
