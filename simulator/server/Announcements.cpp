#include "simulator/server/Announcements.h"

#include <algorithm>

namespace simulator {

void Announcements::setTopic(const std::string& name, std::string text) {
  const auto known =
      std::find_if(topics_.begin(), topics_.end(), [&](const auto& topic) { return topic.first == name; });
  if (known == topics_.end()) {
    topics_.emplace_back(name, std::move(text));
  } else {
    known->second = std::move(text);
  }
}

void Announcements::addLines(const std::vector<std::string>& lines) {
  lines_.insert(lines_.end(), lines.begin(), lines.end());
  while (lines_.size() > kMostLines) lines_.pop_front();
}

std::vector<std::pair<std::string, std::string>> Announcements::all() const {
  auto everything = topics_;
  everything.emplace_back("", consoleMessage(lines_, true));
  return everything;
}

std::string Announcements::consoleMessage(const std::deque<std::string>& lines, bool reset) {
  std::string text = reset ? R"({"type":"console","reset":true,"lines":[)" : R"({"type":"console","lines":[)";
  for (const std::string& line : lines) {
    if (text.back() != '[') text += ',';
    text += line;
  }
  return text + "]}";
}

}  // namespace simulator
