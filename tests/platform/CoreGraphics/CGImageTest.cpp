#include "CoreGraphics/CGImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>

#include "Canvas.h"
#include "support/ScratchFolder.h"

using namespace ios;
using testing_support::outputOf;
using testing_support::ScratchFolder;

namespace {

/// Standard output of a command line in which "%" stands for the folder; it must succeed.
std::string runIn(const ScratchFolder& folder, std::string command) {
  for (auto at = command.find('%'); at != std::string::npos; at = command.find('%'))
    command.replace(at, 1, folder.path().string());
  return outputOf(command);
}

// Soft colours, which a lossy encoder must keep.
Canvas picture(std::size_t width, std::size_t height) {
  Canvas canvas(width, height);
  CGContextDrawVerticalGradient(canvas.context, {{0, 0}, {width * 1.0, height * 1.0}}, {0.9, 0.2, 0.1, 1},
                                {0.1, 0.3, 0.8, 1});
  return canvas;
}

Pixel pixel(const CGImageRef& image, std::size_t x, std::size_t y) {
  Pixel p;
  std::memcpy(&p, image->pixels() + y * image->bytesPerRow() + x * 4, 4);
  return p;
}

// Decoding damaged bytes must give either an image with readable pixels or no image.
void expectHarmless(const Bytes& bytes) {
  const CGImageRef image = CGImage::decode(bytes);
  if (!image) return;
  ASSERT_LE(image->width(), CGImage::kMaximumPixels / image->height());
  unsigned sum = 0;
  for (std::size_t i = 0; i < image->height() * image->bytesPerRow(); ++i) sum += image->pixels()[i];
  ASSERT_GE(sum, 0u);
}

}  // namespace

TEST(CGImage, JPEGIsReadByDjpegWithTheSamePicture) {
  const ScratchFolder folder;
  const Canvas canvas = picture(61, 37);
  const CGImageRef image = canvas.image(true);
  for (const double quality : {0.5, 0.8, 0.95}) {
    folder.write("a.jpg", image->jpeg(quality).value());
    const std::string pnm = runIn(folder, "djpeg -pnm %/a.jpg");
    const std::string header = "P6\n61 37\n255\n";
    ASSERT_EQ(header, pnm.substr(0, header.size()));
    ASSERT_EQ(header.size() + 61 * 37 * 3, pnm.size());
    int worst = 0;
    for (std::size_t i = 0; i < 61 * 37; ++i) {
      const std::uint32_t expected = canvas.at(i % 61, i / 61).argb;
      for (unsigned c = 0; c < 3; ++c) {
        const int value = static_cast<std::uint8_t>(pnm[header.size() + i * 3 + c]);
        worst = std::max(worst, std::abs(value - static_cast<int>(expected >> (16 - 8 * c) & 255)));
      }
    }
    EXPECT_LE(worst, 12) << quality;
  }
}

TEST(CGImage, JPEGQualityIsClampedAndChoosesTheSubsampling) {
  const CGImageRef image = picture(64, 64).image(true);
  const auto subsampling = [](const Bytes& jpeg) {
    const std::uint8_t startOfFrame[] = {0xFF, 0xC0};
    const auto at = std::search(jpeg.begin(), jpeg.end(), std::begin(startOfFrame), std::end(startOfFrame));
    return at == jpeg.end() ? 0 : at[11];  // of the first component: 0x22 halves the colours, 0x11 does not
  };
  struct Row {
    double quality, same;
    int subsampling;
  };
  for (const Row& row :
       {Row{-1, 0.01, 0x22}, Row{0, 0.01, 0x22}, Row{std::numeric_limits<double>::quiet_NaN(), 0.01, 0x22},
        Row{0.894, 0.89, 0x22}, Row{0.9, 0.901, 0x11}, Row{7, 1, 0x11}}) {
    const Bytes jpeg = image->jpeg(row.quality).value();
    EXPECT_EQ(row.subsampling, subsampling(jpeg)) << row.quality;
    EXPECT_EQ(image->jpeg(row.same), jpeg) << row.quality;
  }
  const auto one = std::shared_ptr<const std::uint8_t[]>(new std::uint8_t[70'000 * 4]());
  EXPECT_FALSE(CGImage(one, 70'000, 1, 280'000).jpeg(0.5)) << "wider than the format allows";
}

TEST(CGImage, PNGKeepsPixelsAndIsReadByOthers) {
  const ScratchFolder folder;
  Canvas canvas(3, 2, true, 1, 1);
  canvas.fill({{0, 0}, {1, 1}}, kRed);
  canvas.fill({{0, 1}, {1, 1}}, Pixel{0xFF204060});
  CGContextSetFillColorWithColor(canvas.context, {1, 0.5, 0, 0.5});
  CGContextFillRect(canvas.context, {{1, 0}, {1, 2}});
  const Bytes png = canvas.image(false)->png();
  const CGImageRef back = CGImage::decode(png);
  ASSERT_TRUE(back);
  EXPECT_FALSE(back->isOpaque());
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(canvas.at(i % 3, i / 3), pixel(back, i % 3, i / 3)) << i;

  // A reader of 20 lines: rows are not filtered in what is written here, and colours are not premultiplied.
  folder.write("a.png", png);
  const char* reader =
      "python3 -c \"import struct,zlib\n"
      "b=open('%/a.png','rb').read(); at=8; data=b''\n"
      "while at<len(b):\n"
      "  n,t=struct.unpack('>I4s',b[at:at+8]); c=b[at+8:at+8+n]\n"
      "  assert zlib.crc32(t+c)==struct.unpack('>I',b[at+8+n:at+12+n])[0]\n"
      "  data+=c if t==b'IDAT' else b''; at+=12+n\n"
      "print(zlib.decompress(data).hex(), end='')\"";
  const std::string rows = runIn(folder, reader);
  EXPECT_EQ(
      "00"
      "ff0000ff"
      "ff800080"
      "00000000"
      "00"
      "204060ff"
      "ff800080"
      "00000000",
      rows);

  const CGImageRef opaque = picture(20, 10).image(true);
  const CGImageRef again = CGImage::decode(opaque->png());
  ASSERT_TRUE(again);
  EXPECT_TRUE(again->isOpaque());
  EXPECT_EQ(0, std::memcmp(opaque->pixels(), again->pixels(), 20 * 10 * 4));
  EXPECT_EQ(opaque->png(), again->png());
}

TEST(CGImage, RefusesFilesThatWereCutShort) {
  const CGImageRef image = picture(40, 30).image(true);
  for (const Bytes& whole : {image->png(), image->jpeg(0.8).value()}) {
    ASSERT_TRUE(CGImage::decode(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
      EXPECT_FALSE(CGImage::decode(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))))
          << length << " of " << whole.size();
    }
  }
  EXPECT_FALSE(CGImage::decode(std::filesystem::path("no such file")));
  EXPECT_FALSE(CGImage::decode(std::filesystem::temp_directory_path()));
}

TEST(CGImage, SurvivesDamagedFiles) {
  std::mt19937 random(7);
  const CGImageRef image = picture(40, 30).image(true);
  for (const Bytes& whole : {image->png(), image->jpeg(0.8).value()}) {
    for (int round = 0; round < 500; ++round) {
      Bytes damaged = whole;
      for (int i = 0; i <= round % 4; ++i)
        damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
      expectHarmless(damaged);
    }
  }
}

TEST(CGImage, RefusesSizesBeyondItsLimit) {
  const ScratchFolder folder;
  // Complete, valid files with one bit per pixel, a few kilobytes each.
  runIn(
      folder,
      "python3 -c \"import struct,zlib\n"
      "def chunk(t,c): return struct.pack('>I',len(c))+t+c+struct.pack('>I',zlib.crc32(t+c))\n"
      "for w,h in (8000,100),(8000,8001),(64000001,1):\n"
      "  rows=zlib.compress(bytes(h*(1+(w+7)//8)),9)\n"
      "  "
      "open('%/"
      "'+str(h)+'.png','wb').write(b'\\x89PNG\\r\\n\\x1a\\n'+chunk(b'IHDR',struct.pack('>IIBBBBB',w,h,1,0,0,"
      "0,0))"
      "+chunk(b'IDAT',rows)+chunk(b'IEND',b''))\"");
  EXPECT_TRUE(CGImage::decode(folder.path() / "100.png"));
  EXPECT_FALSE(CGImage::decode(folder.path() / "8001.png"));
  EXPECT_FALSE(CGImage::decode(folder.path() / "1.png"));

  Bytes jpeg = picture(8, 8).image(true)->jpeg(0.8).value();
  const std::uint8_t startOfFrame[] = {0xFF, 0xC0};
  const auto at = std::search(jpeg.begin(), jpeg.end(), std::begin(startOfFrame), std::end(startOfFrame));
  ASSERT_NE(jpeg.end(), at);
  for (int i = 5; i < 9; ++i) at[i] = 0xF0;
  EXPECT_FALSE(CGImage::decode(jpeg));
}
