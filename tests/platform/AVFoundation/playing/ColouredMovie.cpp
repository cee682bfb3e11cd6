#include "platform/AVFoundation/playing/ColouredMovie.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "AVFoundation/AVPlayer.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSNotificationCenter.h"
#include "platform/AVFoundation/Studio.h"
#include "support/Process.h"

namespace testing_support {

using namespace ios;

Colour colourAt(double seconds) {
  static constexpr Colour kColours[] = {{220, 30, 30}, {30, 200, 40}, {40, 60, 230}, {240, 220, 30}};
  const double ofPicture = std::floor(seconds * 30 + 1e-6) / 30;
  return kColours[static_cast<std::size_t>(std::floor(ofPicture * 4 + 1e-6)) % std::size(kColours)];
}

std::filesystem::path colouredMovie(const std::filesystem::path& folder, double seconds, std::size_t width,
                                    std::size_t height) {
  const auto path = folder / "movie.mov";
  std::shared_ptr<NSError> error;
  const auto writer =
      AVAssetWriter::initWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie, error);
  const auto input = AVAssetWriterInput::initWithMediaType(
      AVMediaTypeVideo, NSDictionary{{AVVideoCodecKey, AVVideoCodecH264},
                                     {AVVideoWidthKey, static_cast<double>(width)},
                                     {AVVideoHeightKey, static_cast<double>(height)}});
  const auto adaptor = AVAssetWriterInputPixelBufferAdaptor::initWithAssetWriterInput(input, std::nullopt);
  writer->addInput(input);
  EXPECT_TRUE(writer->startWriting());
  writer->startSessionAtSourceTime(kCMTimeZero);
  for (int frame = 0; frame < std::lround(seconds * 30); ++frame) {
    const auto picture = plain(width, height, colourAt(frame / 30.0));
    EXPECT_TRUE(adaptor->appendPixelBuffer(picture, CMTimeMake(frame * 20, 600)));
  }
  bool finished = false;
  writer->finishWritingWithCompletionHandler(
      [&] { dispatch_async(dispatch_get_main_queue(), [&] { finished = true; }); });
  EXPECT_TRUE(Clock::shared().runUntil([&] { return finished; }, std::chrono::seconds(1)));
  return path;
}

std::filesystem::path rewritten(const std::filesystem::path& movie, const std::string& arguments) {
  const auto path = movie.parent_path() / "rewritten.mov";
  const std::string command =
      "ffmpeg -v error -y -i '" + movie.string() + "' " + arguments + " '" + path.string() + "'";
  EXPECT_EQ(0, std::system(command.c_str())) << command;
  return path;
}

std::filesystem::path brokenOff(const std::filesystem::path& movie, double seconds, double share) {
  const auto streamed = rewritten(movie, "-c copy -movflags +faststart");
  std::istringstream packets(
      outputOf("ffprobe -v error -select_streams v -show_entries packet=pts_time,size,pos -of csv=p=0 '" +
               streamed.string() + "'"));
  double time = 0;
  std::uintmax_t size = 0, position = 0;
  for (char comma = 0; packets >> time >> comma >> size >> comma >> position;) {
    if (time < seconds) continue;
    const double part = share * static_cast<double>(size);
    std::filesystem::resize_file(streamed, position + static_cast<std::uintmax_t>(part));
    return streamed;
  }
  ADD_FAILURE() << movie << " has no picture at " << seconds << " s";
  return streamed;
}

std::shared_ptr<Ends> Ends::counted() {
  const auto ends = std::make_shared<Ends>();
  NSNotificationCenter::defaultCenter()->addObserver(ends, "ended", AVPlayerItemDidPlayToEndTimeNotification,
                                                     nullptr);
  return ends;
}

}  // namespace testing_support
