#include "CompanionPhone.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "CoreGraphics/CGImage.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSKeyedArchiver.h"

namespace companion_tests {

namespace fs = std::filesystem;

Snapshot snapshot(const fs::path& folder) {
  Snapshot result;
  if (!fs::is_directory(folder)) return result;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).string();
    const auto status = entry.symlink_status();
    if (fs::is_symlink(status)) {
      result[name] = "→ " + fs::read_symlink(entry.path()).string();
    } else if (fs::is_directory(status)) {
      result[name] = "folder";
    } else if (fs::is_regular_file(status)) {
      const ios::Bytes bytes = read(entry.path());
      result[name] = std::string(bytes.begin(), bytes.end());
    } else {
      result[name] = "other";
    }
  }
  return result;
}

void write(const fs::path& file, const ios::Bytes& bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(stream.flush()) << file;
}

ios::Bytes read(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return ios::Bytes(std::istreambuf_iterator<char>(stream), {});
}

ios::Bytes bytesOf(const std::string& text) {
  return ios::Bytes(text.begin(), text.end());
}

Ended run(const Program& program) {
  const ScratchFolder folder;
  const fs::path out = folder.path() / "out", err = folder.path() / "err";
  std::vector<std::string> texts = program.arguments;
  std::vector<char*> arguments;
  for (auto& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    for (const auto& [name, value] : program.variables) ::setenv(name.c_str(), value.c_str(), 1);
    if (!std::freopen(out.c_str(), "w", stdout) || !std::freopen(err.c_str(), "w", stderr)) ::_exit(126);
    if (program.longestFile) {
      const rlimit limit{*program.longestFile, *program.longestFile};
      ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return {};
  const ios::Bytes said = read(out), complained = read(err);
  return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
          std::string(said.begin(), said.end()), std::string(complained.begin(), complained.end())};
}

Program CompanionPhone::program() const {
  constexpr std::int64_t kUptime = 7'000'000'000;
  const std::int64_t wall = ios::Clock::kVirtualEpoch.time_since_epoch().count() + kUptime;
  return {{COMPANION_BUNDLE "/Tellvane"},
          {{"IOS_DEVICE", root().string()},
           {"IOS_BUNDLE", COMPANION_BUNDLE},
           {"IOS_VIRTUAL_TIME", std::to_string(kUptime) + " " + std::to_string(wall)},
           {"IOS_OPEN_URL", "Tellvane://" COMPANION_IDENTIFIER}},
          std::nullopt};
}

companion::Record imageRecord() {
  return {{"sdkId", "iOS-1.0.0.7"},   {"appVersion", "3.0.12"},
          {"oSFamily", "iOS"},        {"appName", "My Notes"},
          {"oSVersion", "10.3.1"},    {"deviceResolution", "375.00 x 667.00"},
          {"language", "en-US"},      {"screenName", "ListViewController"},
          {"deviceModel", "iPhone 6"}};
}

companion::Record videoRecord() {
  companion::Record record = imageRecord();
  record.erase("screenName");
  record["videoName"] = "ListViewController";
  record["videoInPhotosAlbum"] = "9F983DBA-EC35-42B8-8773-B597CF782EDD/L0/001";
  return record;
}

ios::NSDictionary dictionaryOf(const companion::Record& record) {
  return ios::NSDictionary(record.begin(), record.end());
}

ios::Bytes archiveOf(const ios::PropertyList& root) {
  return ios::NSKeyedArchiver::archivedDataWithRootObject(root)->bytes();
}

ios::Bytes archiveOfObjects(ios::NSArray objects) {
  using UID = ios::PropertyList::UID;
  return ios::PropertyList(ios::NSDictionary{{"$archiver", "NSKeyedArchiver"},
                                             {"$version", 100000},
                                             {"$top", ios::NSDictionary{{"root", UID{1}}}},
                                             {"$objects", std::move(objects)}})
      .binary();
}

ios::Bytes jpeg(int width, int height) {
  const std::size_t bytesPerRow = static_cast<std::size_t>(width) * 4;
  const std::shared_ptr<std::uint8_t[]> pixels(new std::uint8_t[bytesPerRow * height]);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      std::uint8_t* pixel = &pixels[y * bytesPerRow + x * 4];
      pixel[0] = static_cast<std::uint8_t>(x * 3), pixel[1] = static_cast<std::uint8_t>(y),
      pixel[2] = static_cast<std::uint8_t>(x ^ y), pixel[3] = 255;
    }
  }
  return ios::CGImage(pixels, width, height, bytesPerRow).jpeg(0.9).value();
}

ios::Bytes pasteboardOf(ios::NSArray items, ios::PropertyList changeCount) {
  return ios::PropertyList(
             ios::NSDictionary{{"changeCount", std::move(changeCount)}, {"items", std::move(items)}})
      .binary();
}

ios::NSDictionary imageItem() {
  return {{"dictionaryInApp", archiveOf(dictionaryOf(imageRecord()))}, {"imageData", jpeg()}};
}

companion::Report report(const std::string& screenName, int changeCount) {
  companion::Report report;
  report.record = imageRecord();
  report.record["screenName"] = screenName;
  report.representations = {{"dictionaryInApp", archiveOf(dictionaryOf(report.record))},
                            {"imageData", jpeg()}};
  report.image = companion::ImageSize{75, 133};
  report.changeCount = changeCount;
  return report;
}

}  // namespace companion_tests
