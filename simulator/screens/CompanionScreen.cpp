#include <algorithm>
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
    const CGFloat head = 156;
    add(std::make_shared<Shade>(CGRectMake(0, kStatusBar, size.width, head - kStatusBar), 0x4A37A8,
                                0x2E2170));
    addBackLink(0xFFFFFF);
    add(std::make_shared<AppIcon>(CGRectMake(20, 74, 60, 60), kCompanionIdentifier, "Tellvane"));
    const bool any = newest_.reports > 0;
    add(makeLabel("Tellvane", CGRectMake(94, 76, size.width - 110, 30), 24, 600, 0xFFFFFF));
    add(makeLabel(any ? "Report received" : "No report yet", CGRectMake(94, 106, size.width - 110, 24), 17,
                  400, 0xE4DDFF));
    if (any) buildReport(size, head + 16);
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
    const CGFloat width = card->bounds().width(), rowHeight = 34;
    CGFloat y = 8;
    for (const auto& [name, value] : rows) {
      card->addSubview(makeLabel(name, CGRectMake(16, y, 88, rowHeight), 15, 400, 0x8A84A0));
      card->addSubview(makeLabel(value, CGRectMake(108, y, width - 124, rowHeight), 15, 600, 0x241C48));
      y += rowHeight;
      auto line = std::make_shared<UIView>(CGRectMake(16, y - 0.5, width - 16, 0.5));
      line->setBackgroundColor(UIColor::colorWithHex(0xE2DEF0));
      card->addSubview(line);
    }
    std::error_code error;
    if (fs::exists(newest_.movie, error)) {
      addMovie(*card, y + 14);
    } else {
      addPicture(*card, y + 14);
    }
  }

  void addMovie(UIView& card, CGFloat top) {
    const CGRect room = CGRectMake(16, top, card.bounds().width() - 32, card.bounds().height() - top - 16);
    if (room.height() < 80) return;
    const auto controller = std::make_shared<AVPlayerViewController>();
    controller->setPlayer(AVPlayer::playerWithURL(NSURL::fileURLWithPath(newest_.movie)));
    addChildViewController(controller);
    controller->view()->setFrame(room);
    card.addSubview(controller->view());
  }

  void addPicture(UIView& card, CGFloat top) {
    const auto image = UIImage::imageWithContentsOfFile(newest_.image);
    const CGSize room = {card.bounds().width() - 32, card.bounds().height() - top - 16};
    if (!image || room.height < 40) return;
    const CGFloat scale = std::min(room.width / image->size().width, room.height / image->size().height);
    const CGSize shown = {image->size().width * scale, image->size().height * scale};
    auto picture = std::make_shared<UIImageView>(image);
    picture->setFrame(CGRectMake((card.bounds().width() - shown.width) / 2, top, shown.width, shown.height));
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
