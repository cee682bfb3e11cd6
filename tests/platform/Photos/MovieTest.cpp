#include <gtest/gtest.h>

#include <fstream>

#include "Gallery.h"
#include "Photos/PHError.h"
#include "support/SampleMovie.h"

namespace ios {
namespace {

using namespace testing_support;

// A recording that failed is handed to the library like any other; only a movie may become an asset.
TEST(PhotoLibrary, TakesMoviesAndNothingElse) {
  const Gallery gallery;
  const auto make = [&](const std::string& name, const std::string& options) {
    const auto file = gallery.scratch.path() / name;
    const std::string command = "ffmpeg -v error -y " + options + " '" + file.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return file;
  };
  const std::string whole = gallery.scratch.read("sample.mov");
  const auto early = sampleMovie(gallery.scratch.path() / "early.mov", "-movflags +faststart");
  const std::string index = gallery.scratch.read("early.mov");
  const auto list =
      gallery.scratch.write("list.mov", "ffconcat version 1.0\nfile '" + gallery.sample().string() + "'\n");
  const struct {
    const char* what;
    std::filesystem::path file;
  } rows[] = {
      {"an empty file", gallery.scratch.write("empty.mov", std::string())},
      {"a text", gallery.scratch.write("text.mov", std::string("<html>"))},
      {"half a movie", gallery.scratch.write("half.mov", whole.substr(0, whole.size() / 2))},
      {"a movie whose index is whole and whose pictures are cut",
       gallery.scratch.write("cut.mov", index.substr(0, index.size() - 1000))},
      {"sound alone", make("sound.mov", "-f lavfi -i sine=duration=1 -c:a aac -f mov")},
      {"a picture", make("picture.png", "-f lavfi -i testsrc=size=64x48 -frames:v 1")},
      {"a list that leads to another file", list},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::shared_ptr<NSError> error;
    EXPECT_FALSE(gallery.save(row.file, nullptr, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), PHPhotosErrorInvalidResource) << error->localizedDescription();
    EXPECT_NE(error->localizedDescription().find(row.file.filename().string()), std::string::npos);
    gallery.expectWhole();
  }

  // Nothing there: nothing is asked for, and nothing changes.
  std::shared_ptr<NSError> error;
  for (const auto& nothing : {gallery.scratch.path() / "nothing.mov", gallery.scratch.path()})
    EXPECT_FALSE(gallery.save(nothing, nullptr, &error) || error) << nothing;

  EXPECT_TRUE(gallery.save(early));
  EXPECT_TRUE(
      gallery.save(make("sounding.mov",
                        "-f lavfi -i testsrc=size=32x32:rate=5:duration=3 -f lavfi -i "
                        "sine=duration=3 -pix_fmt yuv420p -metadata creation_time=2020-02-03T04:05:06Z")));
  EXPECT_EQ(gallery.query("SELECT width, round(duration, 1), datetime(round(created), 'unixepoch') FROM asset"
                          " ORDER BY id DESC LIMIT 1"),
            "32|3.0|2020-02-03 04:05:06\n");
}

TEST(PhotoLibrary, OverwritesNoFileThatItDoesNotKnow) {
  const Gallery gallery;
  gallery.save(gallery.sample());
  std::ofstream(gallery.movie(2)) << "somebody's";
  std::filesystem::create_symlink("/nowhere", gallery.movie(3));
  gallery.save(gallery.sample());
  EXPECT_EQ(gallery.query("SELECT number FROM asset"), "1\n4\n");
  EXPECT_EQ(std::filesystem::file_size(gallery.movie(2)), 10u);
}

}  // namespace
}  // namespace ios
