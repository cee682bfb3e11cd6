#include <gtest/gtest.h>

#include "Gallery.h"
#include "Photos/AssetsLibraryURL.h"

namespace ios {
namespace {

using namespace testing_support;

TEST(AssetsLibraryURL, LeadsToTheMovieOfAnAssetAndNowhereElse) {
  const Gallery gallery;
  const auto identifier = gallery.save(gallery.sample());
  ASSERT_TRUE(identifier);
  const std::string uuid = identifier->substr(0, 36);
  const auto movie = [](const std::string& text) {
    const auto url = NSURL::URLWithString(text);
    return url ? movieOfAsset(*url) : std::nullopt;
  };
  const std::string start = "assets-library://asset/asset.MP4?id=", end = "&ext=MP4";
  EXPECT_EQ(movie(start + uuid + end), gallery.movie(1));

  std::string lower = uuid;
  for (char& c : lower) c = static_cast<char>(std::tolower(c));
  for (const std::string& stranger :
       {start + end, start + lower + end, start + uuid, start + *identifier + end, start + "*" + end,
        start + "%25" + end, start + uuid + "'--" + end, start + "'%20OR%20'1'='1" + end,
        start + "../../Photos.sqlite" + end, start + uuid.substr(1) + end, start + uuid + "0" + end,
        start + "9F983DBA-EC35-42B8-8773-B597CF782EDD" + end, start + uuid + end + end,
        "assets-library://asset/asset.MOV?id=" + uuid + "&ext=MOV", "file://" + gallery.movie(1).string(),
        std::string("assets-library://asset/asset.MP4?id=&ext=MP"), std::string("assets-library:")}) {
    EXPECT_EQ(movie(stranger), std::nullopt) << stranger;
  }
  std::filesystem::remove(gallery.movie(1));
  EXPECT_EQ(movie(start + uuid + end), std::nullopt) << "the file is gone";
  std::filesystem::create_symlink(gallery.sample(), gallery.movie(1));
  EXPECT_EQ(movie(start + uuid + end), std::nullopt) << "a link has taken its place";
}

}  // namespace
}  // namespace ios
