#include "simulator/live/LibraryWatch.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Device/Device.h"
#include "Photos/LibraryContents.h"
#include "simulator/live/Json.h"
#include "simulator/live/Words.h"
#include "simulator/screens/Screens.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::NSArray;
using ios::NSDictionary;

/// A report's folder is called after the time when it came, "2026-01-05T09-41-07Z-1", and a number in that second.
std::pair<std::string, long> age(const std::string& name) {
  const std::size_t dash = name.rfind('-');
  return {name.substr(0, dash),
          dash == std::string::npos ? 0 : std::strtol(name.c_str() + dash + 1, nullptr, 10)};
}

std::string received(const std::string& name) {
  std::string time = age(name).first;
  for (const std::size_t colon : {std::size_t{13}, std::size_t{16}}) {
    if (time.size() > colon && time[colon] == '-') time[colon] = ':';
  }
  return time;
}

/// "Notes, ListViewController"
std::string titleOf(const fs::path& report) {
  const auto bytes = ios::readFile(report / "record.json", nullptr, 1 << 20);
  const auto record =
      bytes ? readJson({reinterpret_cast<const char*>(bytes->data()), bytes->size()}) : std::nullopt;
  if (!record) return report.filename().string();
  const ios::PropertyList list(*record);
  std::string title;
  for (const char* key : {"appName", "screenName", "videoName"}) {
    if (const std::string* text = list.text(key)) title += (title.empty() ? "" : ", ") + *text;
  }
  return title;
}

}  // namespace

std::optional<NSDictionary> LibraryWatch::photos() {
  const fs::path media = ios::Device::current().root() / "Media";
  // Each has to be asked, so that each is known.
  const bool files = movies_.hasChanged(media / "DCIM" / "100TLVNE");
  const bool database = database_.hasChanged(media / "Photos.sqlite");
  const bool log = log_.hasChanged(media / "Photos.sqlite-wal");
  if (!files && !database && !log) return std::nullopt;

  const ios::LibraryContents contents = ios::contentsOfLibrary(ios::Device::current().root());
  NSArray movies, albums;
  for (const auto& movie : contents.movies) {
    std::error_code error;
    const auto size = fs::file_size(movie.file, error);
    movies.push_back(NSDictionary{
        {"id", movie.identifier},
        {"name", movie.file.filename().string()},
        {"url", filePrefix_ + "movies/" + movie.file.lexically_relative(media / "DCIM").generic_string()},
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

std::optional<NSDictionary> LibraryWatch::inbox() {
  const fs::path inbox =
      ios::Device::current().root() / "Containers" / kCompanionIdentifier / "Documents" / "inbox";
  if (!inbox_.hasChanged(inbox)) return std::nullopt;
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(inbox, error)) {
    if (fs::is_regular_file(entry.path() / "index.html", error))
      names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return age(b) < age(a); });
  NSArray reports;
  const std::string base = filePrefix_ + "inbox/";
  for (const std::string& name : names) {
    NSDictionary report{{"name", name},
                        {"url", base + name + "/index.html"},
                        {"title", titleOf(inbox / name)},
                        {"received", received(name)}};
    if (fs::is_regular_file(inbox / name / "image.jpg", error)) report["image"] = base + name + "/image.jpg";
    if (fs::is_regular_file(inbox / name / "movie.mov", error)) report["movie"] = base + name + "/movie.mov";
    reports.push_back(std::move(report));
  }
  return NSDictionary{{"index", base + "index.html"}, {"reports", std::move(reports)}};
}

}  // namespace simulator
