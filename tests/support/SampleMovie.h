#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace testing_support {

/// A movie of 20 pictures in 2 seconds that another program wrote, 64 by 48 pixels.
inline std::filesystem::path sampleMovie(const std::filesystem::path& file, const std::string& more = "") {
  std::filesystem::create_directories(file.parent_path());
  const std::string command =
      "ffmpeg -v error -y -f lavfi -i testsrc=size=64x48:rate=10 -t 2 -pix_fmt yuv420p -c:v libx264 -f mov " +
      more + " '" + file.string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return file;
}

}  // namespace testing_support
