#include "simulator/phone/Console.h"

#include <algorithm>

namespace simulator {
namespace {

constexpr std::size_t kMostOnDisk = 16 << 20, kMostInMemory = 4 << 20, kMostLines = 50'000;
constexpr std::size_t kLongestLine = 64 << 10;

}  // namespace

Console::Console(const std::filesystem::path& folder, LineSink lineSink)
    : outputLog_(folder / "console.log", kMostOnDisk),
      errorsLog_(folder / "errors.log", kMostOnDisk),
      lineSink_(std::move(lineSink)) {}

void Console::append(Stream stream, std::string_view bytes) {
  const bool output = stream == Stream::output;
  (output ? outputLog_ : errorsLog_).append(bytes);
  std::string& unfinished = output ? unfinishedOutput_ : unfinishedErrors_;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), kLongestLine - unfinished.size());
    unfinished += bytes.substr(0, end);
    const bool whole = end < bytes.size() && bytes[end] == '\n';
    bytes.remove_prefix(std::min(bytes.size(), end + (whole ? 1 : 0)));
    if (whole || unfinished.size() >= kLongestLine) endLine(stream);
  }
}

void Console::endLine(Stream stream) {
  if (stream == Stream::errors) {
    lineSink_(stream, std::exchange(unfinishedErrors_, {}));
    return;
  }
  lineBytes_ += unfinishedOutput_.size();
  lines_.push_back({std::exchange(unfinishedOutput_, {})});
  lineSink_(stream, lines_.back().text);
  while (lineBytes_ > kMostInMemory || lines_.size() > kMostLines) {
    lineBytes_ -= lines_.front().text.size();
    lines_.pop_front();
    ++dropped_;
  }
}

void Console::beginSearchHere() {
  if (!unfinishedOutput_.empty()) endLine(Stream::output);
  lines_.clear();
  lineBytes_ = dropped_ = 0;
}

bool Console::take(const TextPattern& pattern) {
  const auto found = std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) {
    return !line.taken && pattern.matches(line.text);
  });
  if (found == lines_.end()) return false;
  found->taken = true;
  return true;
}

bool Console::contains(const TextPattern& pattern) const {
  return std::any_of(lines_.begin(), lines_.end(),
                     [&](const Line& line) { return pattern.matches(line.text); });
}

std::vector<std::string> Console::lastLines(std::size_t count) const {
  std::vector<std::string> texts;
  for (std::size_t i = lines_.size() - std::min(count, lines_.size()); i < lines_.size(); ++i) {
    texts.push_back(lines_[i].text);
  }
  return texts;
}

}  // namespace simulator
