#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "AVFoundation/AVPlayer.h"
#include "AVKit/AVPlayerViewController.h"
#include "Device/Files.h"
#include "Foundation/NSURL.h"
#include "UIKit/UIImageView.h"
#include "simulator/screens/Parts.h"
#include "simulator/screens/ScreenController.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

struct Newest {
  std::map<std::string, std::string> record;
  fs::path image, movie;
  int reports = 0;
};

/// A folder's name is a time and, behind the last "-", a number within that second.
std::pair<std::string, long> age(const fs::path& report) {
  const std::string name = report.filename().string();
  const std::size_t dash = name.rfind('-');
  return {name.substr(0, dash),
          dash == std::string::npos ? 0 : std::strtol(name.c_str() + dash + 1, nullptr, 10)};
}

Newest newestReport(const fs::path& inbox) {
  Newest result;
  fs::path newest;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(inbox, error)) {
    if (!fs::is_regular_file(entry.path() / "record.json", error)) continue;
    ++result.reports;
    if (newest.empty() || age(newest) < age(entry.path())) newest = entry.path();
  }
  if (newest.empty()) return result;
  const auto bytes = ios::readFile(newest / "record.json", nullptr, 1 << 20);
  if (!bytes) return result;
  const auto json = nlohmann::json::parse(bytes->begin(), bytes->end(), nullptr, false);
  if (json.is_object()) {
    for (const auto& [key, value] : json.items()) {
      if (value.is_string()) result.record[key] = value.get<std::string>();
    }
  }
  result.image = newest / "image.jpg";
  result.movie = newest / "movie.mov";
  return result;
}

class CompanionScreen : public ScreenController {
 public:
  CompanionScreen(const fs::path& inbox, const std::string& backTo, WishSink wish)
      : ScreenController(backTo, std::move(wish)), newest_(newestReport(inbox)) {}

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
    const int count = newest_.reports;
    const std::string heading = count > 1    ? std::to_string(count) + " reports received"
                                : count == 1 ? "Report received"
                                             : "No report yet";
    add(makeLabel("Tellvane", CGRectMake(left, middle - 28, width, 30), 24, 600, 0xFFFFFF));
    add(makeLabel(heading, CGRectMake(left, middle + 2, width, 24), 17, 400, 0xE4DDFF));
    if (count > 0) buildReport(size, head + 16);
  }

  std::string entry(const char* key) const {
    const auto found = newest_.record.find(key);
    return found == newest_.record.end() ? "" : found->second;
  }

  void buildReport(CGSize size, CGFloat top) {
    const CGFloat margin = 16;
    auto card =
        std::make_shared<UIView>(CGRectMake(margin, top, size.width - 2 * margin, size.height - top - 24));
    card->setBackgroundColor(UIColor::whiteColor());
    card->layer()->cornerRadius = 14;
    card->layer()->masksToBounds = true;
    add(card);

    const std::vector<std::pair<std::string, std::string>> rows = {
        {"App", entry("appName") + " " + entry("appVersion")},
        {"Screen", entry("screenName") + entry("videoName")},
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
    std::error_code error;
    if (fs::exists(newest_.movie, error)) {
      addMovie(*card, upright ? below : beside);
    } else {
      addPicture(*card, upright ? below : beside);
    }
  }

  void addMovie(UIView& card, const CGRect& room) {
    if (room.height() < 80) return;
    const auto controller = std::make_shared<AVPlayerViewController>();
    controller->setPlayer(AVPlayer::playerWithURL(NSURL::fileURLWithPath(newest_.movie)));
    addChildViewController(controller);
    controller->view()->setFrame(room);
    card.addSubview(controller->view());
  }

  void addPicture(UIView& card, const CGRect& room) {
    const auto image = UIImage::imageWithContentsOfFile(newest_.image);
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

  Newest newest_;
};

}  // namespace

std::shared_ptr<UIViewController> makeCompanionScreen(const fs::path& inbox, const std::string& backTo,
                                                      WishSink wish) {
  return std::make_shared<CompanionScreen>(inbox, backTo, std::move(wish));
}

}  // namespace simulator
