#include "simulator/flow/Workspace.h"

#include <algorithm>
#include <set>

#include "simulator/flow/FlowFile.h"
#include "simulator/flow/FlowReader.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

struct Configuration {
  Names patterns = {"*"};
  Names includeTags, excludeTags, order;
};

Names names(const YamlValue& value) {
  Names names;
  for (const YamlValue& each : value.list()) names.push_back(text(each));
  return names;
}

/// A list of names, or the list that a map has among other things.
Names order(const YamlValue& value) {
  if (!value.isMap()) return names(value);
  for (const auto& [key, member] : value.members()) {
    if (member.node().IsSequence()) return names(member);
  }
  return {};
}

Configuration configuration(const fs::path& file) {
  Configuration result;
  const auto documents = readDocuments(file);
  if (documents.empty()) return result;
  const auto context = std::make_shared<FlowContext>();
  context->file = file.string();
  const YamlValue all(context, "", documents.front(), 1, 1);
  if (all.isNull()) return result;
  for (const auto& [key, value] : all.members()) {
    if (key == "flows") result.patterns = names(value);
    if (key == "includeTags") result.includeTags = names(value);
    if (key == "excludeTags") result.excludeTags = names(value);
    if (key == "executionOrder") result.order = order(value);
  }
  return result;
}

bool isFlow(const fs::path& path) {
  return (path.extension() == ".yaml" || path.extension() == ".yml") &&
         path.filename() != Workspace::kConfiguration;
}

bool haveCommon(const Names& a, const Names& b) {
  return std::any_of(a.begin(), a.end(),
                     [&](const std::string& each) { return std::find(b.begin(), b.end(), each) != b.end(); });
}

/// A chosen flow, with its place in the order.
struct Chosen {
  std::size_t place;
  fs::path file;
  auto operator<=>(const Chosen&) const = default;
};

/// What a folder needs to know of a flow.
struct Head {
  std::string name;
  Names tags;
};

Head headOf(const fs::path& file) {
  Head head;
  try {
    const auto documents = readDocuments(file);
    if (documents.empty() || !documents.front().IsMap()) return head;
    const YAML::Node& header = documents.front();
    if (header["name"].IsDefined() && header["name"].IsScalar()) head.name = header["name"].Scalar();
    if (!header["tags"].IsDefined() || !header["tags"].IsSequence()) return head;
    for (const auto& tag : header["tags"]) {
      if (tag.IsScalar()) head.tags.push_back(tag.Scalar());
    }
  } catch (const FlowError&) {
  }
  return head;
}

std::size_t placeOf(const Head& head, const fs::path& file, const Names& order) {
  const auto found = std::find_if(order.begin(), order.end(), [&](const std::string& name) {
    return name == head.name || name == file.stem() || name == file.filename();
  });
  return static_cast<std::size_t>(found - order.begin());
}

bool fits(const std::string& name, const std::string& pattern, std::size_t n = 0, std::size_t p = 0) {
  for (; p < pattern.size(); ++n, ++p) {
    if (pattern[p] == '*') {
      for (std::size_t rest = n; rest <= name.size(); ++rest) {
        if (fits(name, pattern, rest, p + 1)) return true;
      }
      return false;
    }
    if (n == name.size() || (pattern[p] != '?' && pattern[p] != name[n])) return false;
  }
  return n == name.size();
}

using Part = fs::path::const_iterator;
bool partsFit(Part name, Part namesEnd, Part pattern, Part patternsEnd) {
  if (pattern == patternsEnd) return name == namesEnd;
  if (*pattern == "**") {
    const Part next = std::next(pattern);
    for (Part rest = name;; ++rest) {
      if (partsFit(rest, namesEnd, next, patternsEnd)) return true;
      if (rest == namesEnd) return false;
    }
  }
  if (name == namesEnd) return false;
  // A pattern may leave the ending out.
  const bool last = std::next(name) == namesEnd && std::next(pattern) == patternsEnd;
  if (!fits(name->string(), pattern->string()) && !(last && fits(name->stem().string(), pattern->string())))
    return false;
  return partsFit(std::next(name), namesEnd, std::next(pattern), patternsEnd);
}

}  // namespace

bool fitsPattern(const fs::path& path, const std::string& pattern) {
  const fs::path parts = fs::path(pattern).lexically_normal();
  return partsFit(path.begin(), path.end(), parts.begin(), parts.end());
}

std::vector<fs::path> Workspace::flows(const fs::path& folder, std::string& problem) {
  std::set<Chosen> chosen;
  try {
    const Configuration wanted = configuration(folder / kConfiguration);
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder, error)) {
      const fs::path name = entry.path().lexically_relative(folder);
      const bool named = std::any_of(wanted.patterns.begin(), wanted.patterns.end(),
                                     [&](const std::string& pattern) { return fitsPattern(name, pattern); });
      if (!named || !entry.is_regular_file(error) || !isFlow(name)) continue;
      const Head head = headOf(entry.path());
      if (!wanted.includeTags.empty() && !haveCommon(head.tags, wanted.includeTags)) continue;
      if (haveCommon(head.tags, wanted.excludeTags)) continue;
      chosen.insert({placeOf(head, name, wanted.order), entry.path()});
    }
  } catch (const FlowError& error) {
    problem = error.what();
  }
  std::vector<fs::path> flows;
  for (const Chosen& each : chosen) flows.push_back(each.file);
  return flows;
}

}  // namespace simulator
