#include "simulator/Console.h"

#include <algorithm>

namespace simulator {

Console::Console(const std::filesystem::path& file, LineSink lineSink)
    : file_(file, std::ios::binary | std::ios::trunc), lineSink_(std::move(lineSink)) {}

void Console::append(std::string_view bytes) {
  file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file_.flush();
  for (const char byte : bytes) {
    if (byte == '\n') {
      endLine();
    } else {
      unfinished_ += byte;
    }
  }
}

void Console::endLine() {
  lines_.push_back({std::move(unfinished_)});
  unfinished_.clear();
  lineSink_(lines_.back().text);
}

void Console::beginSearchHere() {
  if (!unfinished_.empty()) endLine();
  lines_.clear();
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
