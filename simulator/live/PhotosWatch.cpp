#include "simulator/live/PhotosWatch.h"

#include "Device/Device.h"
#include "Photos/LibraryContents.h"

namespace simulator {

namespace fs = std::filesystem;
using ios::NSArray;
using ios::NSDictionary;

std::optional<NSDictionary> PhotosWatch::look() {
  const ios::Device& device = ios::Device::current();
  const fs::path media = device.mediaFolder();
  // Each has to be asked, so that each is known.
  const bool files = movies_.hasChanged(device.moviesFolder() / "100TLVNE");
  const bool database = database_.hasChanged(media / "Photos.sqlite");
  const bool log = log_.hasChanged(media / "Photos.sqlite-wal");
  if (!files && !database && !log) return std::nullopt;

  const ios::LibraryContents contents = ios::contentsOfLibrary(device.root());
  NSArray movies, albums;
  for (const auto& movie : contents.movies) {
    std::error_code error;
    const auto size = fs::file_size(movie.file, error);
    movies.push_back(NSDictionary{
        {"id", movie.identifier},
        {"name", movie.file.filename().string()},
        {"url",
         filePrefix_ + "movies/" + movie.file.lexically_relative(device.moviesFolder()).generic_string()},
        {"size", error ? std::int64_t{0} : static_cast<std::int64_t>(size)},
        {"duration", movie.duration},
        {"width", std::int64_t{movie.width}},
        {"height", std::int64_t{movie.height}}});
  }
  for (const auto& album : contents.albums) {
    NSArray identifiers(album.movies.begin(), album.movies.end());
    albums.push_back(NSDictionary{{"title", album.title}, {"movies", std::move(identifiers)}});
  }
  return NSDictionary{{"movies", std::move(movies)}, {"albums", std::move(albums)}};
}

}  // namespace simulator
