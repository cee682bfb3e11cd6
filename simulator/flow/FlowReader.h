#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "simulator/flow/Flow.h"
#include "simulator/flow/Place.h"
#include "simulator/flow/Selector.h"
#include "simulator/flow/Words.h"
#include "simulator/flow/YamlFields.h"
#include "simulator/phone/TextPattern.h"

namespace simulator {

constexpr int kLongestMilliseconds = 3'600'000;
constexpr double kLongestSeconds = 86'400;

/// To the nearest nanosecond: 1.234 is 1234 ms, which a conversion that cuts off makes one nanosecond less of.
std::chrono::nanoseconds fromSeconds(double seconds);

/// A text that must not be empty.
std::string text(const YamlValue& value);
/// A text to look for.
TextPattern pattern(const YamlValue& value);
/// "50%,50%" or "160,284".
Place place(const YamlValue& value);
std::string bundleIdentifier(const YamlValue& value);
/// A text, or a map of what is known of an element. Keys of `others` belong to the command.
Selector selector(const YamlValue& value, const std::vector<std::string>& others = {});
/// Whether a map says anything that `selector` would read.
bool saysSelector(const YamlValue& value);
/// A file that is there, named relative to the flow.
std::filesystem::path file(const YamlValue& value);
/// A name for a file of the output folder, without its ending.
std::string outputName(const YamlValue& value);
/// One of a few words, whatever its case; `expected` tells them: "UP, DOWN, LEFT or RIGHT".
template <class Meaning>
const Meaning& oneOf(const YamlValue& value, const std::map<std::string, Meaning>& words,
                     const std::string& expected) {
  if (value.isOpen()) return words.begin()->second;
  const auto found = words.find(lowerCase(value.text()));
  if (found != words.end()) return found->second;
  std::vector<std::string> known;
  for (const auto& [word, meaning] : words) known.push_back(word);
  value.fail("expected " + expected + ", not \"" + value.text() + "\"" + suggestion(value.text(), known));
}
/// The value of a command that is written by itself, or under `key` of a map with that one key.
YamlValue single(const YamlValue& value, const std::string& key);
/// For a command that takes no values.
void expectNothing(const YamlValue& value);

/// Reads one flow and those that it runs. Throws a FlowError at the first slip.
class FlowReader {
 public:
  explicit FlowReader(Variables given = {}) : given_(std::move(given)) {}
  Flow read(const std::filesystem::path& file);
  /// As `read`, of a file that the flow being read names at `value`, which gives it the texts of `env` besides its own.
  Flow readInner(const YamlValue& value, const YamlValue* env);
  std::vector<Step> steps(const YamlValue& list);
  /// Steps that can name the texts of `env` too.
  std::vector<Step> stepsWithin(const YamlValue& list, const YamlValue* env);
  /// The texts of `env`, which stands in the flow being read.
  std::shared_ptr<const FlowEnvironment> environment(const YamlValue* env) const;

 private:
  Flow readDocuments(const std::string& shown, FlowContext context, const Variables& kept,
                     const std::filesystem::path& file);
  std::vector<Step> hook(const std::map<std::string, YamlValue>& fields, const std::string& key);
  Step step(const YamlValue& item);

  Variables given_;                          // by the command line
  std::vector<std::filesystem::path> open_;  // the flow being read, behind the flows that run it
  std::size_t depth_ = 0, count_ = 0;
};

/// The kinds of all commands, by name.
const std::map<std::string, CommandKind>& commandKinds();

}  // namespace simulator
