#include <algorithm>
#include <cmath>

#include "AVFoundation/AVPlayer.h"
#include "AVKit/AVPlayerViewController.h"
#include "Foundation/NSURL.h"
#include "UIKit/UIImageView.h"
#include "companion/Inbox.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

class CompanionScreen : public ScreenController {
 public:
  CompanionScreen(const std::filesystem::path& home, const std::string& backTo, WishSink wish)
      : ScreenController(backTo, std::move(wish)), inbox_(home), reports_(inbox_.reports()) {}

 private:
  void build(CGSize size) override {
    view()->setBackgroundColor(UIColor::colorWithHex(0xF1EFFA));
    // Held upright the name stands below the way back, held on the side beside it.
    const bool upright = size.height > size.width;
    const CGFloat head = upright ? 156 : 84, icon = upright ? 60 : 40;
    const CGPoint corner = upright ? CGPoint{20, 74} : CGPoint{size.width / 2 - 100, 32};
    add(std::make_shared<Shade>(CGRectMake(0, kStatusBar, size.width, head - kStatusBar), 0x4A37A8,
                                0x2E2170));
    addBackLink(0xFFFFFF);
    add(std::make_shared<AppIcon>(CGRectMake(corner.x, corner.y, icon, icon), kCompanionIdentifier,
                                  "Tellvane"));
    const CGFloat left = corner.x + icon + 14, width = size.width - left - 16;
    const CGFloat middle = corner.y + icon / 2;
    const std::size_t count = reports_.size();
    const std::string heading = count > 1    ? std::to_string(count) + " reports received"
                                : count == 1 ? "Report received"
                                             : "No report yet";
    add(makeLabel("Tellvane", CGRectMake(left, middle - 28, width, 30), 24, 600, 0xFFFFFF));
    add(makeLabel(heading, CGRectMake(left, middle + 2, width, 24), 17, 400, 0xE4DDFF));
    if (count > 0) buildReport(reports_.front(), size, head + 16);
  }

  void buildReport(const companion::InboxEntry& report, CGSize size, CGFloat top) {
    const companion::Record record = report.record.value_or(companion::Record());
    const auto entry = [&record](std::string_view key) { return companion::entry(record, key); };
    const CGFloat margin = 16;
    auto card =
        std::make_shared<UIView>(CGRectMake(margin, top, size.width - 2 * margin, size.height - top - 24));
    card->setBackgroundColor(UIColor::whiteColor());
    card->layer()->cornerRadius = 14;
    card->layer()->masksToBounds = true;
    add(card);

    const std::vector<std::pair<std::string, std::string>> rows = {
        {"App", entry("appName") + " " + entry("appVersion")},
        {"Screen", companion::screen(record)},
        {"Device", entry("deviceModel")},
        {"System", entry("oSFamily") + " " + entry("oSVersion")},
        {"Size", entry("deviceResolution")},
        {"Language", entry("language")},
        {"Library", entry("sdkId")},
    };
    // The picture goes below the facts, or beside them where there is more room.
    const CGSize whole = card->bounds().size;
    const bool upright = size.height > size.width;
    const CGFloat width = upright ? whole.width : std::floor(whole.width / 2);
    const CGFloat rowHeight =
        std::min<CGFloat>(34, std::floor((whole.height - 16) / static_cast<CGFloat>(rows.size())));
    CGFloat y = 8;
    for (const auto& [name, value] : rows) {
      card->addSubview(makeLabel(name, CGRectMake(16, y, 88, rowHeight), 15, 400, 0x8A84A0));
      auto fact = makeLabel(value, CGRectMake(108, y, width - 124, rowHeight), 15, 600, 0x241C48);
      fact->setMinimumScaleFactor(0.7);
      card->addSubview(fact);
      y += rowHeight;
      auto line = std::make_shared<UIView>(CGRectMake(16, y - 0.5, width - 16, 0.5));
      line->setBackgroundColor(UIColor::colorWithHex(0xE2DEF0));
      card->addSubview(line);
    }
    const CGRect below = CGRectMake(16, y + 14, whole.width - 32, whole.height - y - 30);
    const CGRect beside = CGRectMake(width + 16, 16, whole.width - width - 32, whole.height - 32);
    if (report.hasMovie) {
      addMovie(*card, inbox_.movieOf(report.name), upright ? below : beside);
    } else if (report.hasImage) {
      addPicture(*card, inbox_.imageOf(report.name), upright ? below : beside);
    }
  }

  void addMovie(UIView& card, const std::filesystem::path& movie, const CGRect& room) {
    if (room.height() < 80) return;
    const auto controller = std::make_shared<AVPlayerViewController>();
    controller->setPlayer(AVPlayer::playerWithURL(NSURL::fileURLWithPath(movie)));
    addChildViewController(controller);
    controller->view()->setFrame(room);
    card.addSubview(controller->view());
  }

  void addPicture(UIView& card, const std::filesystem::path& file, const CGRect& room) {
    const auto image = UIImage::imageWithContentsOfFile(file);
    if (!image || room.height() < 40) return;
    const CGFloat scale = std::min(room.width() / image->size().width, room.height() / image->size().height);
    const CGSize shown = {image->size().width * scale, image->size().height * scale};
    auto picture = std::make_shared<UIImageView>(image);
    picture->setFrame(CGRectMake(room.midX() - shown.width / 2, room.minY(), shown.width, shown.height));
    picture->layer()->borderWidth = 0.5;
    picture->layer()->borderColor = UIColor::colorWithHex(0xC8C2DE)->CGColorValue();
    picture->setAccessibilityLabel("Picture of the screen");
    card.addSubview(picture);
  }

  const companion::Inbox inbox_;
  const std::vector<companion::InboxEntry> reports_;
};

}  // namespace

std::shared_ptr<UIViewController> makeCompanionScreen(const std::filesystem::path& home,
                                                      const std::string& backTo, WishSink wish) {
  return std::make_shared<CompanionScreen>(home, backTo, std::move(wish));
}

}  // namespace simulator
