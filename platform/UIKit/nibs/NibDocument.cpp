#include <charconv>
#include <cmath>
#include <pugixml.hpp>

#include "CoreFoundation/Unicode.h"
#include "UIKit/Private/NibDocument.h"

namespace ios {
namespace {

constexpr std::size_t kDeepest = 64;
constexpr std::size_t kMostElements = 10'000;

class Copy {
 public:
  explicit Copy(std::string& problem) : problem_(problem) {}

  bool element(pugi::xml_node node, std::size_t depth, NibElement& copy) {
    if (depth > kDeepest) return fail("is nested deeper than 64 levels");
    if (++elements_ > kMostElements) return fail("has more than 10000 elements");
    copy.name = repairedUTF8(node.name());
    for (const auto attribute : node.attributes())
      copy.attributes.emplace_back(repairedUTF8(attribute.name()), repairedUTF8(attribute.value()));
    for (const auto child : node.children()) {
      if (child.type() != pugi::node_element) continue;
      if (!element(child, depth + 1, copy.children.emplace_back())) return false;
    }
    return true;
  }

 private:
  bool fail(const char* what) {
    problem_ = what;
    return false;
  }

  std::string& problem_;
  std::size_t elements_ = 0;
};

}  // namespace

const std::string* NibElement::find(std::string_view attribute) const {
  for (const auto& [key, value] : attributes) {
    if (key == attribute) return &value;
  }
  return nullptr;
}

std::string NibElement::text(std::string_view attribute) const {
  const std::string* value = find(attribute);
  return value ? *value : std::string();
}

std::optional<double> NibElement::number(std::string_view attribute) const {
  const std::string* value = find(attribute);
  if (!value) return std::nullopt;
  double result = 0;
  const char* end = value->data() + value->size();
  const auto [stop, error] = std::from_chars(value->data(), end, result);
  if (error != std::errc() || stop != end || !std::isfinite(result)) return std::nullopt;
  if (std::abs(result) > kLargestNumber) return std::nullopt;
  return result;
}

const NibElement* NibElement::child(std::string_view childName) const {
  for (const auto& inside : children) {
    if (inside.name == childName) return &inside;
  }
  return nullptr;
}

std::optional<NibElement> readNibDocument(std::span<const std::uint8_t> bytes, std::string& problem) {
  pugi::xml_document xml;
  const auto result = xml.load_buffer(bytes.data(), bytes.size());
  if (!result) {
    problem = "is not well-formed XML at byte " + std::to_string(result.offset) + ": " + result.description();
    return std::nullopt;
  }
  const auto root = xml.child("document");
  if (!root) {
    problem = "is XML without a <document>";
    return std::nullopt;
  }
  NibElement document;
  if (!Copy(problem).element(root, 1, document)) return std::nullopt;
  if (!document.child("objects")) {
    problem = "is a document without <objects>";
    return std::nullopt;
  }
  return document;
}

}  // namespace ios
