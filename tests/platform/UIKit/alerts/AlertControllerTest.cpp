#include <algorithm>

#include "UIKit/UILabel.h"
#include "UIKit/UIScrollView.h"
#include "platform/UIKit/Support.h"

namespace controllers_test {
namespace {

using Style = UIAlertControllerStyle;
using ActionStyle = UIAlertActionStyle;

/// The library's own menu, as every host shows it.
std::shared_ptr<UIAlertController> menu(Style style, const UIAlertAction::Handler& handler) {
  auto alert = UIAlertController::alertControllerWithTitle("Options", std::nullopt, style);
  alert->addAction(UIAlertAction::actionWithTitle("Capture Screen", ActionStyle::default_, handler));
  alert->addAction(UIAlertAction::actionWithTitle("Delete", ActionStyle::destructive, handler));
  alert->addAction(UIAlertAction::actionWithTitle("Cancel", ActionStyle::cancel, handler));
  return alert;
}

/// The frame on the screen of the view labelled `text`; empty size if there is none.
CGRect frameOf(const std::shared_ptr<UIView>& view, const std::string& text) {
  if (view->accessibilityLabel() == text) return view->convertRectToView(view->bounds(), nullptr);
  for (const auto& subview : view->subviews()) {
    if (const CGRect found = frameOf(subview, text); found.width() > 0) return found;
  }
  return {};
}

TEST(AlertController, RunsTheHandlerOnceAfterTheDismissalHasEnded) {
  TestPhone phone;
  const auto root = plain();
  phone.show(root);
  for (const Style style : {Style::alert, Style::actionSheet}) {
    std::vector<std::string> chosen;
    auto alert = menu(style, [&](const auto& action) {
      EXPECT_EQ(nullptr, root->presentedViewController());
      chosen.push_back(action->title());
    });
    root->presentViewController(alert, true);
    EXPECT_TRUE(phone.tapText("Capture Screen")) << "on its way in: not taken";
    phone.runFor(1);
    EXPECT_EQ(alert, root->presentedViewController());
    const CGRect row = frameOf(alert->view(), "Capture Screen");
    phone.tap({row.midX(), row.midY()}, 1);
    EXPECT_TRUE(chosen.empty()) << "still on its way out";
    phone.tap({row.midX(), row.midY()}, 3);
    phone.runFor(1);
    EXPECT_EQ(std::vector<std::string>{"Capture Screen"}, chosen);

    const std::weak_ptr<UIAlertController> weak = alert;
    alert.reset();
    EXPECT_TRUE(weak.expired()) << "closing frees it";
  }
}

TEST(AlertController, TakesTheFirstOfSeveralFingers) {
  TestPhone phone;
  const auto root = plain();
  phone.show(root);
  for (const Style style : {Style::alert, Style::actionSheet}) {
    std::string chosen;
    const auto alert = menu(style, [&](const auto& action) { chosen += action->title() + ";"; });
    root->presentViewController(alert, true);
    phone.runFor(1);
    const auto middle = [&](const std::string& text) {
      const CGRect row = frameOf(alert->view(), text);
      return CGPoint{row.midX(), row.midY()};
    };
    using Phase = TouchSample::Phase;
    auto& input = phone.device().input();
    const CGPoint first = middle("Delete"), second = middle("Capture Screen"), beside{10, 40};
    input.touches({{101, Phase::began, first}, {102, Phase::began, second}, {103, Phase::began, beside}});
    phone.runFor(0.05);
    input.touches({{101, Phase::ended, first}});
    input.touches({{102, Phase::ended, second}});
    input.touches({{103, Phase::ended, beside}});
    phone.runFor(1);
    EXPECT_EQ("Delete;", chosen);
    EXPECT_EQ(nullptr, root->presentedViewController());
  }
}

TEST(AlertController, TappingBesideCountsAsCancelOnASheetOnly) {
  struct Row {
    const char* name;
    Style style;
    bool cancel;
    const char* expected;
  };
  const Row rows[] = {{"sheet", Style::actionSheet, true, "Cancel"},
                      {"sheet without cancel", Style::actionSheet, false, "open"},
                      {"alert", Style::alert, true, "open"}};
  TestPhone phone;
  const auto root = plain();
  phone.show(root);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::string result = "open";
    auto alert = UIAlertController::alertControllerWithTitle("t", "m", row.style);
    const auto handler = [&](const auto& action) { result = action->title(); };
    alert->addAction(UIAlertAction::actionWithTitle("One", ActionStyle::default_, handler));
    if (row.cancel) alert->addAction(UIAlertAction::actionWithTitle("Cancel", ActionStyle::cancel, handler));
    root->presentViewController(alert, true);
    phone.runFor(1);
    phone.tap({30, 60});
    phone.runFor(1);
    EXPECT_EQ(row.expected, result);
    EXPECT_EQ(result == "open", root->presentedViewController() == alert);
    root->dismissViewControllerAnimated(false);
  }
}

TEST(AlertController, OnAPadASheetIsAPopoverAtItsAnchor) {
  TestPhone phone({.profile = "iPad Air 2"});
  const auto root = plain();
  phone.show(root);
  std::string chosen;
  const auto handler = [&](const auto& action) { chosen = action->title(); };

  auto sheet = menu(Style::actionSheet, handler);
  const auto said = complaintsOf([&] { root->presentViewController(sheet, true); });
  EXPECT_NE(std::string::npos, said.find("without an anchor")) << said;
  EXPECT_EQ(nullptr, root->presentedViewController());

  const auto popover = sheet->popoverPresentationController();
  ASSERT_NE(nullptr, popover);
  popover->sourceView = root->view();
  struct Row {
    const char* name;
    CGRect anchor;
    unsigned directions;
    bool (*stands)(const CGRect& panel, const CGRect& anchor);
  };
  const Row rows[] = {
      {"no arrow: centred on the rectangle", CGRectMake(384, 512, 0, 0), UIPopoverArrowDirectionNone,
       [](const CGRect& p, const CGRect& a) {
         return std::abs(p.midX() - a.midX()) < 1 && std::abs(p.midY() - a.midY()) < 1;
       }},
      {"below a button at the top", CGRectMake(600, 30, 100, 30), UIPopoverArrowDirectionAny,
       [](const CGRect& p, const CGRect& a) { return p.minY() >= a.maxY() && p.maxX() <= 758; }},
      {"above a button at the bottom", CGRectMake(20, 980, 100, 30), UIPopoverArrowDirectionAny,
       [](const CGRect& p, const CGRect& a) { return p.maxY() <= a.minY() && p.minX() >= 10; }},
      {"beside, where only that is permitted", CGRectMake(20, 300, 100, 30), 4,
       [](const CGRect& p, const CGRect& a) {
         return p.minX() >= a.maxX() && p.minY() < a.maxY() && p.maxY() > a.minY();
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    popover->sourceRect = row.anchor;
    popover->permittedArrowDirections = row.directions;
    root->presentViewController(sheet, true);
    phone.runFor(1);
    const CGRect panel = sheet->view()->convertRectToView(sheet->view()->bounds(), nullptr);
    EXPECT_EQ(304, panel.width());
    EXPECT_TRUE(row.stands(panel, row.anchor))
        << panel.minX() << " " << panel.minY() << " " << panel.height();
    EXPECT_FALSE(phone.shows("Cancel")) << "beside it is cancel";
    chosen.clear();
    phone.tap({5, 600});
    phone.runFor(1);
    EXPECT_EQ("Cancel", chosen);
    EXPECT_EQ(nullptr, root->presentedViewController());
  }
}

struct ButtonLayout {
  const char* name;
  const char* language;
  std::vector<std::pair<const char*, ActionStyle>> actions;
  /// From left to right, then from top to bottom.
  std::vector<const char*> order;
  bool sideBySide;
};
const ButtonLayout kButtonLayouts[] = {
    {"two",
     "en-US",
     {{"Install", ActionStyle::default_}, {"Cancel", ActionStyle::destructive}},
     {"Install", "Cancel"},
     true},
    {"cancel first",
     "en-US",
     {{"OK", ActionStyle::default_}, {"Cancel", ActionStyle::cancel}},
     {"Cancel", "OK"},
     true},
    {"mirrored",
     "ar",
     {{"OK", ActionStyle::default_}, {"Cancel", ActionStyle::cancel}},
     {"OK", "Cancel"},
     true},
    {"long",
     "de-DE",
     {{"Abbrechen", ActionStyle::cancel}, {"Bildschirmaufnahme starten", ActionStyle::default_}},
     {"Bildschirmaufnahme starten", "Abbrechen"},
     false},
    {"three",
     "en-US",
     {{"Cancel", ActionStyle::cancel}, {"A", ActionStyle::default_}, {"B", ActionStyle::default_}},
     {"A", "B", "Cancel"},
     false},
};

TEST(AlertController, LaysButtonsOutByStyleLanguageAndLength) {
  TestPhone phone;
  const auto root = plain();
  phone.show(root);
  for (const ButtonLayout& row : kButtonLayouts) {
    SCOPED_TRACE(row.name);
    phone.device().changeSettings([&](DeviceSettings& settings) { settings.languages = {row.language}; });
    const auto alert = UIAlertController::alertControllerWithTitle("t", "m", Style::alert);
    for (const auto& [title, style] : row.actions) {
      alert->addAction(UIAlertAction::actionWithTitle(title, style, nullptr));
    }
    root->presentViewController(alert, false);
    phone.runFor(0.1);
    for (std::size_t i = 1; i < row.order.size(); ++i) {
      const CGRect before = frameOf(alert->view(), row.order[i - 1]),
                   after = frameOf(alert->view(), row.order[i]);
      if (row.sideBySide) {
        EXPECT_EQ(before.maxX(), after.minX());
        EXPECT_EQ(before.minY(), after.minY());
      } else {
        EXPECT_EQ(before.maxY(), after.minY());
        EXPECT_EQ(270, after.width());
      }
    }
    root->dismissViewControllerAnimated(false);
  }
}

/// Every label in `view`, from top to bottom.
std::vector<std::shared_ptr<UILabel>> labels(const std::shared_ptr<UIView>& view) {
  std::vector<std::shared_ptr<UILabel>> found;
  if (auto label = std::dynamic_pointer_cast<UILabel>(view)) found.push_back(label);
  for (const auto& subview : view->subviews()) {
    for (auto& label : labels(subview)) found.push_back(std::move(label));
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
    return a->convertRectToView(a->bounds(), nullptr).minY() <
           b->convertRectToView(b->bounds(), nullptr).minY();
  });
  return found;
}

TEST(AlertController, LargerTextsAreLargerAndNeitherOverlapNorAreCut) {
  TestPhone phone({.profile = "iPhone SE"});
  const auto root = plain();
  phone.show(root);
  for (const Style style : {Style::alert, Style::actionSheet}) {
    CGFloat smaller = 0;
    for (int size = 0; size < kTextSizes; ++size) {
      SCOPED_TRACE(std::string(textSizeName(static_cast<TextSize>(size))));
      phone.device().changeSettings([&](auto& settings) { settings.textSize = static_cast<TextSize>(size); });
      const auto alert = UIAlertController::alertControllerWithTitle("Optionen", std::nullopt, style);
      for (const char* title : {"Bildschirm aufnehmen", "Bildschirmvideo aufnehmen"})
        alert->addAction(UIAlertAction::actionWithTitle(title, ActionStyle::default_, nullptr));
      alert->addAction(UIAlertAction::actionWithTitle("Abbrechen", ActionStyle::cancel, nullptr));
      root->presentViewController(alert, false);
      phone.runFor(0.1);
      const auto texts = labels(alert->view());
      ASSERT_EQ(4u, texts.size());
      CGFloat above = 20;  // the status bar
      for (const auto& text : texts) {
        SCOPED_TRACE(text->text());
        const CGRect frame = text->convertRectToView(text->bounds(), nullptr);
        const CGSize needed = text->sizeThatFits({frame.width(), 0});
        EXPECT_GE(frame.minY(), above);
        EXPECT_LE(needed.height, frame.height());
        // A line may still shrink to 0.6 of its size; with several lines, no word is wider than they are.
        EXPECT_LE(needed.width * (size < static_cast<int>(TextSize::AccessibilityM) ? 0.6 : 1),
                  frame.width());
        above = frame.maxY();
      }
      EXPECT_LE(above, 568);
      const CGFloat heading = texts.front()->frame().height();
      EXPECT_GE(heading, smaller);
      smaller = heading;
      root->dismissViewControllerAnimated(false);
    }
    EXPECT_GT(smaller, 50);
  }
}

/// The list of actions, which holds the row labelled `text`.
std::shared_ptr<UIScrollView> listWith(const std::shared_ptr<UIView>& view, const std::string& text) {
  const auto list = std::dynamic_pointer_cast<UIScrollView>(view);
  if (list && frameOf(list, text).width() > 0) return list;
  for (const auto& subview : view->subviews()) {
    if (auto found = listWith(subview, text)) return found;
  }
  return nullptr;
}

// A list that ends between two rows looks whole.
TEST(AlertController, EndsInsideOfARowWhereItHasToScroll) {
  int scrolling = 0;
  TestPhone phone({.profile = "iPhone SE"});
  const auto root = plain();
  const auto window = phone.show(root);
  for (double height = 180; height <= 320; height += 10) {
    for (const TextSize size : {TextSize::L, TextSize::AccessibilityL, TextSize::AccessibilityXXXL}) {
      SCOPED_TRACE(std::to_string(height) + " " + std::string(textSizeName(size)));
      window->setFrame(CGRectMake(0, 0, 320, height));
      phone.device().changeSettings([&](auto& settings) { settings.textSize = size; });
      const auto alert = menu(Style::actionSheet, nullptr);
      root->presentViewController(alert, false);
      phone.runFor(0.1);
      const auto list = listWith(alert->view(), "Delete");
      ASSERT_TRUE(list);
      const CGRect shown = list->convertRectToView(list->bounds(), nullptr);
      if (list->contentSize().height > shown.height() + 0.5) {
        ++scrolling;
        double cut = 0;
        for (const char* action : {"Capture Screen", "Delete"}) {
          const CGRect row = frameOf(list, action);
          const double share = (shown.maxY() - row.minY()) / row.height();
          if (share > 0 && share < 1) cut = share;
        }
        EXPECT_GT(cut, 0.15);
        EXPECT_LT(cut, 0.85);
      }
      root->dismissViewControllerAnimated(false);
    }
  }
  EXPECT_GT(scrolling, 10);
}

TEST(AlertController, StaysOnTheScreenHoweverMuchItSays) {
  TestPhone phone({.profile = "iPhone SE"});
  const auto root = plain();
  phone.show(root);
  std::string text;
  for (int i = 0; i < 400; ++i) text += "Donaudampfschifffahrtsgesellschaft ";
  for (const Style style : {Style::alert, Style::actionSheet}) {
    for (const int actions : {0, 1, 30}) {
      SCOPED_TRACE(actions);
      std::string chosen;
      const auto alert = UIAlertController::alertControllerWithTitle(text, text, style);
      for (int i = 0; i < actions; ++i) {
        alert->addAction(
            UIAlertAction::actionWithTitle(std::to_string(i) + text, ActionStyle::default_, nullptr));
      }
      alert->addAction(UIAlertAction::actionWithTitle("Schließen", ActionStyle::cancel,
                                                      [&](const auto& action) { chosen = action->title(); }));
      root->presentViewController(alert, false);
      phone.runFor(0.1);
      const CGRect panel = alert->view()->frame();
      EXPECT_GE(panel.minY(), 20);
      EXPECT_LE(panel.maxY(), 568);
      if (actions > 0) {
        EXPECT_GT(frameOf(alert->view(), "0" + text).minY(), panel.minY() + 100) << "room for the texts";
      }
      if (style == Style::alert && actions == 30) {
        for (int i = 0; i < 12; ++i) phone.device().input().swipe({160, 520}, {160, 320});
        phone.runFor(5);
      }
      EXPECT_TRUE(phone.tapText("Schließen"));
      phone.runFor(1);
      EXPECT_EQ("Schließen", chosen) << "the last row can be reached";
      root->dismissViewControllerAnimated(false);
    }
  }
}

TEST(AlertControllerDeathTest, TwoCancelActionsAreAProgrammingError) {
  TestPhone phone;
  const auto alert = UIAlertController::alertControllerWithTitle("t", "m", Style::alert);
  alert->addAction(UIAlertAction::actionWithTitle("1", ActionStyle::cancel, nullptr));
  EXPECT_DEATH(alert->addAction(UIAlertAction::actionWithTitle("2", ActionStyle::cancel, nullptr)),
               "can only have one action with a style of UIAlertActionStyleCancel");
}

}  // namespace
}  // namespace controllers_test
