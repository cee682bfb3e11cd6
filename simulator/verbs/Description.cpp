#include "simulator/verbs/Description.h"

#include <CLI/CLI.hpp>

namespace simulator {
namespace {

/// Without what CLI11 says of checks behind a colon.
std::string typeOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

VerbDescription::Option optionOf(const CLI::Option& option) {
  VerbDescription::Option described;
  for (const std::string& name : option.get_snames()) described.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) described.names.push_back("--" + name);
  if (option.get_items_expected_max() != 0)
    described.value = described.names.empty() ? option.get_name(true) : typeOf(option);
  if (described.names.empty()) {
    // An operand's words are its type: "png|jpeg".
    const std::string type = typeOf(option);
    if (type.find('|') != std::string::npos) described.value = type;
  }
  described.help = option.get_description();
  described.required = option.get_required();
  described.repeated = option.get_items_expected_max() > 1;
  return described;
}

std::string shown(const VerbDescription::Option& option) {
  std::string text = option.names.empty() ? option.value : option.names.back();
  if (!option.names.empty() && !option.value.empty()) text += " " + option.value;
  if (option.repeated) text += "...";
  return option.required ? text : "[" + text + "]";
}

}  // namespace

VerbDescription describe(const VerbKind& kind) {
  CLI::App app;
  app.set_help_flag();
  const auto verb = kind.make();
  verb->declare(app);
  VerbDescription description;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    auto described = optionOf(*option);
    (described.names.empty() ? description.operands : description.options).push_back(std::move(described));
  }
  const std::string family = kind.family();
  description.usage = family.empty() ? kind.word() : family + " ";
  if (!family.empty()) description.usage += (familyHasDevice(family) ? "DEVICE " : "") + kind.word();
  for (const auto& operand : description.operands) description.usage += " " + shown(operand);
  for (const auto& option : description.options) description.usage += " " + shown(option);
  return description;
}

std::vector<std::string> wordsOf(const std::string& value) {
  std::vector<std::string> words;
  if (value.find('|') == std::string::npos) return words;
  for (std::size_t start = 0; start <= value.size();) {
    const std::size_t end = std::min(value.find('|', start), value.size());
    words.push_back(value.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

std::vector<const VerbKind*> kindsNamed(const std::string& name) {
  std::vector<const VerbKind*> found;
  for (const VerbChapter& chapter : verbTable()) {
    for (const VerbKind& kind : chapter.verbs) {
      if (kind.name == name || kind.family() == name) found.push_back(&kind);
    }
  }
  return found;
}

}  // namespace simulator
