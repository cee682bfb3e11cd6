#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "CoreGraphics/CGImage.h"
#include "simulator/live/Fingers.h"
#include "simulator/live/Pace.h"
#include "simulator/server/ByteRange.h"
#include "simulator/server/FileTree.h"
#include "simulator/server/PictureEncoder.h"
#include "simulator/server/Rate.h"
#include "simulator/server/ViewerMessage.h"
#include "simulator/server/ViewerPictures.h"

namespace {

namespace fs = std::filesystem;
using namespace simulator;
using namespace std::chrono_literals;
using Phase = ios::TouchSample::Phase;

TEST(ByteRange, IsWhatThePlayerAskedFor) {
  using Kind = RangeAnswer::Kind;
  const struct {
    const char* header;
    std::uint64_t size;
    Kind kind;
    ByteRange range;
  } rows[] = {
      {"", 100, Kind::whole, {}},
      {"bytes=0-", 100, Kind::part, {0, 100}},
      {"bytes=10-19", 100, Kind::part, {10, 10}},
      {"bytes=90-200", 100, Kind::part, {90, 10}},
      {"bytes=99-99", 100, Kind::part, {99, 1}},
      {"bytes=-30", 100, Kind::part, {70, 30}},
      {"bytes=-300", 100, Kind::part, {0, 100}},
      {"bytes=100-", 100, Kind::unsatisfiable, {}},
      {"bytes=-0", 100, Kind::unsatisfiable, {}},
      {"bytes=0-", 0, Kind::unsatisfiable, {}},
      {"bytes=20-10", 100, Kind::whole, {}},
      {"bytes=0-1,5-6", 100, Kind::whole, {}},
      {"bytes=a-b", 100, Kind::whole, {}},
      {"bytes=18446744073709551616-", 100, Kind::whole, {}},
      {"lines=0-1", 100, Kind::whole, {}},
  };
  for (const auto& row : rows) {
    const RangeAnswer answer = readRange(row.header, row.size);
    EXPECT_EQ(answer.kind, row.kind) << row.header;
    EXPECT_EQ(answer.range, row.range) << row.header;
  }
}

TEST(FileTree, OpensNothingOutsideAndNoLink) {
  const fs::path folder = fs::temp_directory_path() / ("filetree-" + std::to_string(::getpid()));
  fs::create_directories(folder / "root" / "report");
  std::ofstream(folder / "secret") << "secret";
  std::ofstream(folder / "root" / "report" / "index.html") << "page";
  fs::create_symlink(folder / "secret", folder / "root" / "link");
  fs::create_symlink(folder, folder / "root" / "up");
  ASSERT_EQ(::mkfifo((folder / "root" / "pipe").c_str(), 0600), 0);

  const auto page = openBeneath(folder / "root", "report/index.html");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->read(1, 2), "ag");
  const std::string hostile[] = {"../secret",
                                 "report/../../secret",
                                 "link",
                                 "up/secret",
                                 (folder / "secret").string(),
                                 "report",
                                 "pipe",
                                 "",
                                 ".",
                                 std::string("report\0x", 8)};
  for (const std::string& path : hostile) EXPECT_FALSE(openBeneath(folder / "root", path)) << path;
  fs::remove_all(folder);
}

TEST(ViewerMessage, IsNothingElseThanItsThreeKinds) {
  const auto touches = readViewerMessage(R"({"touch":7,"fingers":[[0,"began",1.5,2],[0,"ended",1.5,2]]})");
  ASSERT_TRUE(touches && std::holds_alternative<TouchMessage>(*touches));
  const auto& message = std::get<TouchMessage>(*touches);
  EXPECT_EQ(message.number, 7u);
  ASSERT_EQ(message.samples.size(), 2u);
  EXPECT_EQ(message.samples[1].phase, Phase::ended);
  EXPECT_EQ(message.samples[1].location, (ios::CGPoint{1.5, 2}));
  EXPECT_TRUE(readViewerMessage(R"({"id":1,"command":"home"})"));
  EXPECT_TRUE(readViewerMessage(R"({"shown":4294967295})"));

  const std::string nested = R"({"id":1,"command":"x","a":)" + std::string(100'000, '[');
  const std::string hostile[] = {
      "",
      "null",
      "[]",
      "{",
      nested,
      R"({"shown":-1})",
      R"({"shown":4294967296})",
      R"({"touch":1})",
      R"({"touch":1,"fingers":[[10,"began",0,0]]})",
      R"({"touch":1,"fingers":[[0,"hovered",0,0]]})",
      R"({"touch":1,"fingers":[[0,"began",1e999,0]]})",
      R"({"touch":1,"fingers":[[0,"began",0]]})",
      R"({"command":"home"})",
      R"({"id":1,"command":7})",
      R"({"id":1,"command":"home","more":null})",
      R"({"id":99999999999999999999,"command":"home"})",
  };
  for (const std::string& text : hostile) EXPECT_FALSE(readViewerMessage(text)) << text.substr(0, 80);
}

// A slow viewer that got every picture would fall behind for ever; one that got none would see nothing.
TEST(ViewerPictures, AreTwoOnTheirWayAndOneRectangleForTheRest) {
  ViewerPictures pictures;
  const ViewerPictures::Instant start{1h};
  const auto send = [&](std::uint32_t number, ViewerPictures::Instant now) {
    auto task = pictures.next(now);
    if (task) pictures.sent(number);
    return task;
  };
  pictures.changed({0, 0, 10, 10}, start);
  ASSERT_TRUE(send(1, start));
  pictures.changed({5, 5, 10, 10}, start);
  ASSERT_TRUE(send(2, start));
  pictures.changed({0, 0, 2, 2}, start);
  pictures.changed({40, 50, 2, 2}, start);
  EXPECT_FALSE(pictures.next(start));
  EXPECT_FALSE(pictures.due()) << "nothing can be sent, whatever the time";
  EXPECT_FALSE(pictures.shown(3));

  ASSERT_TRUE(pictures.shown(1));
  const auto merged = send(3, start);
  ASSERT_TRUE(merged);
  EXPECT_EQ(merged->rect, (PixelRect{0, 0, 42, 52}));
  EXPECT_FALSE(merged->exact);

  // At rest, what was sent with loss comes once more; then nothing.
  ASSERT_TRUE(pictures.shown(2) && pictures.shown(3));
  EXPECT_FALSE(pictures.next(start + 149ms));
  EXPECT_EQ(pictures.due(), start + 150ms);
  const auto exact = send(4, start + 150ms);
  ASSERT_TRUE(exact);
  EXPECT_TRUE(exact->exact);
  EXPECT_EQ(exact->rect, (PixelRect{0, 0, 42, 52}));
  ASSERT_TRUE(pictures.shown(4));
  EXPECT_FALSE(pictures.next(start + 1h));
  EXPECT_FALSE(pictures.due());
}

struct Opened {
  PixelRect rect;
  ios::CGImageRef image;
  explicit Opened(const Picture& picture) : rect(picture.rect), image(ios::CGImage::decode(picture.image)) {}
  std::string row(int y, int x, int count) const {
    const std::uint8_t* start = image->pixels() + static_cast<std::size_t>(y) * image->bytesPerRow();
    return {start + static_cast<std::ptrdiff_t>(4) * x, start + static_cast<std::ptrdiff_t>(4) * (x + count)};
  }
};

// A part that is scaled by itself has other pixels at its edges than the whole: a seam for every change.
TEST(PictureEncoder, SendsOfAScaledPictureThePartThatChangedAsTheWholeHasIt) {
  const Display::Shape shape{1242, 2208, 1};
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(shape.width) *
                                   static_cast<std::size_t>(shape.height) * 4);
  std::minstd_rand random(1);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    pixels[i] = i % 4 == 3 ? 255 : static_cast<std::uint8_t>(random());
  Display display;
  display.show(pixels, shape, {0, 0, shape.width, shape.height});
  for (const auto& [width, height] : {std::pair(1100, 1956), std::pair(621, 1104), std::pair(300, 600)}) {
    PictureOrder order{
        .rect = {0, 0, shape.width, shape.height}, .exact = true, .roomWidth = width, .roomHeight = height};
    const Picture first = encodePicture(display, order);
    order.known = first.shape;
    order.knownWidth = first.width;
    order.knownHeight = first.height;
    const PixelRect changed = order.rect = {501, 777, 100, 60};
    for (int row = changed.y; row < changed.bottom(); ++row) {
      const auto start = pixels.begin() + (static_cast<std::ptrdiff_t>(row) * shape.width + changed.x) * 4;
      for (auto each = start; each != start + static_cast<std::ptrdiff_t>(changed.width) * 4; ++each)
        *each ^= 0x7f;
    }
    display.show(pixels, shape, changed);
    const Opened part(encodePicture(display, order));
    order.known = {};
    const Opened whole(encodePicture(display, order));
    ASSERT_EQ(whole.rect, (PixelRect{0, 0, first.width, first.height}));
    const auto [x, y, partWidth, partHeight] = part.rect;
    EXPECT_LT(partWidth * partHeight, first.width * first.height / 50);
    const double scale = static_cast<double>(first.width) / shape.width;
    EXPECT_LE(x, 501 * scale);
    EXPECT_GE(x + partWidth, 601 * scale);
    EXPECT_LE(y, 777 * scale);
    EXPECT_GE(y + partHeight, 837 * scale);
    for (int row = 0; row < partHeight; ++row)
      ASSERT_EQ(part.row(row, 0, partWidth), whole.row(y + row, x, partWidth)) << width << ", row " << row;
  }
}

TEST(Pace, FollowsTheWallAndFallsBehindEvenly) {
  const Pace::Wall wall{1h};
  const Pace::Instant phone{2h};
  const auto soon = phone + 5ms;
  Pace pace(wall, phone);
  EXPECT_EQ(pace.due(wall + 16ms, phone, soon), 16ms);
  // Nothing is due for an hour: one step, however long.
  EXPECT_EQ(pace.due(wall + 10min, phone, phone + 1h), 10min);
  // A machine that comes a second late has lost that second.
  EXPECT_EQ(pace.due(wall + 1s, phone, soon), 50ms);
  EXPECT_TRUE(pace.isBehind());
  EXPECT_EQ(pace.due(wall + 1s + 10ms, phone + 50ms, soon), 10ms);
  EXPECT_FALSE(pace.isBehind());

  pace.setSpeed(0.25, wall + 2s, phone);
  EXPECT_EQ(pace.due(wall + 2s + 40ms, phone, soon), 10ms);
  EXPECT_EQ(pace.wallTimeOf(phone + 10ms), wall + 2s + 40ms);
  pace.pause(wall + 3s, phone);
  EXPECT_EQ(pace.due(wall + 1h, phone, soon), 0ms);
  EXPECT_FALSE(pace.wallTimeOf(soon));
  pace.resume(wall + 1h, phone);
  EXPECT_EQ(pace.due(wall + 1h + 40ms, phone, soon), 10ms) << "paused time is not made up for";
}

// A flow's fingers count up from 1; one of a person's with the same number would take its place.
TEST(Fingers, AreEachViewersOwnAndNoFlows) {
  Fingers fingers;
  const ios::TouchSample down{3, Phase::began, {1, 2}}, up{3, Phase::ended, {1, 2}};
  const auto first = fingers.placed(1, {down}), second = fingers.placed(2, {down});
  ASSERT_EQ(first.size(), 1u);
  ASSERT_EQ(second.size(), 1u);
  EXPECT_NE(first[0].finger, second[0].finger);
  EXPECT_LT(first[0].finger, 0);
  EXPECT_TRUE(fingers.placed(1, {down}).empty()) << "it is down already";
  EXPECT_EQ(fingers.placed(2, {up, down, up}).size(), 3u);
  EXPECT_TRUE(fingers.placed(2, {up}).empty()) << "it is up already";
  const auto lifted = fingers.lifted(1);
  ASSERT_EQ(lifted.size(), 1u);
  EXPECT_EQ(lifted[0].phase, Phase::cancelled);
  EXPECT_EQ(lifted[0].finger, first[0].finger);
  EXPECT_TRUE(fingers.allLifted().empty());
}

TEST(Rate, LetsABurstPassAndThenSoManyASecond) {
  Rate rate(10, 3);
  const Rate::Instant start{1h};
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(rate.allows(start));
  EXPECT_FALSE(rate.allows(start));
  EXPECT_TRUE(rate.allows(start + 100ms));
  EXPECT_FALSE(rate.allows(start + 150ms));
}

}  // namespace
