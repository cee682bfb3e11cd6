#include <algorithm>

#include "simulator/verbs/Description.h"

namespace simulator {
namespace {

constexpr std::size_t kWidth = 100;

/// `text` behind `head`, which gets so many columns, in lines of at most kWidth.
std::string row(const std::string& head, std::size_t column, const std::string& text) {
  std::string result = head, line;
  if (head.size() + 2 > column) {
    result += "\n" + std::string(column, ' ');
  } else {
    result.append(column - head.size(), ' ');
  }
  std::size_t used = column;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(' ', start), text.size());
    const std::string word = text.substr(start, end - start);
    if (used > column && used + 1 + word.size() > kWidth) {
      result += "\n" + std::string(column, ' ');
      used = column;
    }
    if (used > column) result += " ", ++used;
    result += word;
    used += word.size();
    start = end + 1;
  }
  return result + "\n";
}

std::string helpOf(const VerbKind& kind) {
  const VerbDescription description = describe(kind);
  std::string text = "tellvane-sim " + description.usage + "\n    " + kind.summary + "\n";
  for (const auto* options : {&description.operands, &description.options}) {
    for (const auto& option : *options) {
      if (option.help.empty()) continue;
      std::string head = "    ";
      for (const std::string& name : option.names) head += (head.size() > 4 ? ", " : "") + name;
      if (!option.value.empty()) head += (option.names.empty() ? "" : " ") + option.value;
      text += row(head, 32, option.help);
    }
  }
  for (const char* example : kind.examples) text += std::string("  e.g.  tellvane-sim ") + example + "\n";
  return text;
}

}  // namespace

std::string helpText() {
  std::string text =
      "tellvane-sim VERB ...\n"
      "    Makes, boots and steers simulated phones. DEVICE is a name, an identifier, or \"booted\" for the "
      "one\n"
      "    phone that is switched on.\n";
  for (const VerbChapter& chapter : verbTable()) {
    text += std::string("\n") + chapter.title + "\n";
    for (const VerbKind& kind : chapter.verbs)
      text += row(
          "  " + (kind.family().empty()
                      ? kind.word()
                      : kind.family() + (familyHasDevice(kind.family()) ? " DEVICE " : " ") + kind.word()),
          32, kind.summary);
  }
  return text + "\n\"tellvane-sim help VERB\" and \"tellvane-sim VERB --help\" tell more of each.\n";
}

std::string helpText(const std::vector<const VerbKind*>& kinds) {
  std::string text;
  for (const VerbKind* kind : kinds) text += (text.empty() ? "" : "\n") + helpOf(*kind);
  return text;
}

}  // namespace simulator
