#include "support/MovieProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "support/Process.h"

namespace testing_support {

Colour Picture::at(std::size_t x, std::size_t y) const {
  const std::uint8_t* pixel = &pixels[(y * width + x) * 3];
  return {pixel[2], pixel[1], pixel[0]};
}

std::string MovieProbe::run(const std::string& command) const {
  // Error messages appear in the middle of the output, where a caller who expects numbers or pixels stumbles over them.
  std::string output = outputOf(command + " 2>'" + path_.string() + ".complaints'");
  const std::filesystem::path complaints = path_.string() + ".complaints";
  std::ifstream file(complaints);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(text, "") << command;
  std::filesystem::remove(complaints);
  return output;
}

std::string MovieProbe::fact(char kind, const std::string& name) const {
  std::string text =
      run("ffprobe -v warning -select_streams " + std::string(1, kind) + ":0 -show_entries stream=" + name +
          " -of default=noprint_wrappers=1:nokey=1 '" + path_.string() + "'");
  return text.substr(0, text.find('\n'));
}

double MovieProbe::number(char kind, const std::string& name) const {
  return std::strtod(fact(kind, name).c_str(), nullptr);
}

std::vector<std::string> MovieProbe::packets(char kind, const std::string& entry) const {
  std::istringstream lines(run("ffprobe -v warning -select_streams " + std::string(1, kind) +
                               ":0 -show_entries packet=" + entry +
                               " -of default=noprint_wrappers=1:nokey=1 '" + path_.string() + "'"));
  std::vector<std::string> values;
  for (std::string line; std::getline(lines, line);) values.push_back(line);
  return values;
}

std::vector<double> MovieProbe::times(char kind) const {
  std::vector<double> times;
  for (const auto& value : packets(kind, "pts_time")) times.push_back(std::strtod(value.c_str(), nullptr));
  return times;
}

std::vector<long> MovieProbe::sizes(char kind) const {
  std::vector<long> sizes;
  for (const auto& value : packets(kind, "size")) sizes.push_back(std::strtol(value.c_str(), nullptr, 10));
  return sizes;
}

std::size_t MovieProbe::longestKeyInterval() const {
  std::size_t longest = 0, current = 0;
  for (const auto& flags : packets('v', "flags")) {
    current = flags[0] == 'K' ? 1 : current + 1;
    longest = std::max(longest, current);
  }
  return longest;
}

std::vector<Picture> MovieProbe::pictures() const {
  const auto width = static_cast<std::size_t>(number('v', "width"));
  const auto height = static_cast<std::size_t>(number('v', "height"));
  const std::string bytes = run("ffmpeg -v warning -xerror -i '" + path_.string() +
                                "' -map 0:v:0 -fps_mode passthrough -enc_time_base -1 -f rawvideo -pix_fmt "
                                "bgr24 -sws_flags bicubic+accurate_rnd -");
  std::vector<Picture> pictures;
  const std::size_t size = width * height * 3;
  for (std::size_t at = 0; size > 0 && at + size <= bytes.size(); at += size) {
    pictures.push_back(
        {width,
         height,
         {bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(at + size)}});
  }
  return pictures;
}

std::vector<std::int16_t> MovieProbe::sound(int rate, int channels) const {
  const std::string bytes = run("ffmpeg -v warning -xerror -i '" + path_.string() +
                                "' -map 0:a:0 -af aresample=async=1:first_pts=0 -f s16le -ar " +
                                std::to_string(rate) + " -ac " + std::to_string(channels) + " -");
  std::vector<std::int16_t> samples(bytes.size() / 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[2 * i]) |
                                           static_cast<std::uint8_t>(bytes[2 * i + 1]) << 8);
  }
  return samples;
}

double onset(const std::vector<std::int16_t>& sound, int rate) {
  const auto loud =
      std::find_if(sound.begin(), sound.end(), [](int sample) { return std::abs(sample) > 3000; });
  return loud == sound.end() ? -1 : static_cast<double>(loud - sound.begin()) / rate;
}

double frequency(const std::vector<std::int16_t>& sound, double from, double to, int rate) {
  const auto first = static_cast<std::size_t>(from * rate), last = static_cast<std::size_t>(to * rate);
  if (last > sound.size() || first >= last) return 0;
  int rises = 0;
  for (std::size_t i = first + 1; i < last; ++i) rises += sound[i - 1] < 0 && sound[i] >= 0;
  return rises / (to - from);
}

}  // namespace testing_support
