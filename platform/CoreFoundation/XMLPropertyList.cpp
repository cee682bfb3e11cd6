#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <pugixml.hpp>
#include <string_view>

#include "CoreFoundation/Private/PropertyList.h"
#include "CoreFoundation/Unicode.h"

namespace ios::plist {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<Bytes> decodedBase64(std::string_view text) {
  Bytes bytes;
  std::uint32_t bits = 0;
  int count = 0, padding = 0;
  for (const char c : text) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    if (c == '=') {
      ++padding;
      continue;
    }
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto digit = kDigits.find(c);
    if (digit == std::string_view::npos || padding > 0) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    if (++count % 4 != 1) bytes.push_back(static_cast<std::uint8_t>(bits >> (6 - 2 * ((count - 1) % 4))));
  }
  if (count % 4 == 1 || padding > 2) return std::nullopt;
  return bytes;
}

std::optional<std::int64_t> readInteger(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint64_t magnitude = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (magnitude > kLargest + (negative ? 1 : 0)) return std::nullopt;
  return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

std::optional<double> readReal(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  Parsed read() {
    pugi::xml_document document;
    // Blanks that are all of a text belong to it.
    const auto result =
        document.load_buffer(bytes_.data(), bytes_.size(), pugi::parse_default | pugi::parse_ws_pcdata);
    if (!result) return fail(result.offset, std::string("is not well-formed XML: ") + result.description());
    const auto root = document.child("plist");
    if (!root) return fail(0, "is XML without a <plist>");
    const auto value = nextElement(root.first_child());
    if (!value) return fail(root.offset_debug(), "has an empty <plist>");
    if (nextElement(value.next_sibling()))
      return fail(root.offset_debug(), "has more than one value in its <plist>");
    return convert(value, 1);
  }

 private:
  tl::unexpected<std::string> fail(std::ptrdiff_t offset, const std::string& what) const {
    const auto end =
        bytes_.begin() + std::clamp<std::ptrdiff_t>(offset, 0, static_cast<std::ptrdiff_t>(bytes_.size()));
    return failure(what + " (line " + std::to_string(1 + std::count(bytes_.begin(), end, '\n')) + ")");
  }
  tl::unexpected<std::string> fail(pugi::xml_node node, const std::string& what) const {
    return fail(node.offset_debug(), what);
  }

  static pugi::xml_node nextElement(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element) node = node.next_sibling();
    return node;
  }

  Result<std::string, std::string> content(pugi::xml_node node) {
    std::string text;
    for (const auto part : node.children()) {
      if (part.type() == pugi::node_element)
        return fail(part, "has an element inside a <" + std::string(node.name()) + ">");
      if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) text += part.value();
    }
    if (!isUTF8(text)) return fail(node, "has a string that is not UTF-8");
    if ((held_ += text.size()) > kMaximumBytes) return fail(node, kTooLarge);
    return text;
  }

  Parsed convert(pugi::xml_node node, std::size_t depth) {
    if (depth > kMaximumDepth) return fail(node, kTooDeep);
    if (++values_ > kMaximumValues) return fail(node, kTooMany);
    const std::string_view kind = node.name();
    if (kind == "dict") return dictionary(node, depth);
    if (kind == "array") return array(node, depth);
    if (kind == "true" || kind == "false") return PropertyList(kind == "true");
    auto text = IOS_TRY(content(node));
    if (kind == "string") return PropertyList(std::move(text));
    if (kind == "date") return PropertyList(std::string(trimmed(text)));
    if (kind == "data") {
      if (auto bytes = decodedBase64(text)) return PropertyList(std::move(*bytes));
      return fail(node, "has a <data> that is not base64");
    }
    if (kind == "integer") {
      if (auto value = readInteger(trimmed(text))) return PropertyList(*value);
      return fail(node, "has an <integer> that is not a number of at most 64 bits");
    }
    if (kind == "real") {
      if (auto value = readReal(trimmed(text))) return PropertyList(*value);
      return fail(node, "has a <real> that is not a number");
    }
    return fail(node, "has an unknown element <" + repairedUTF8(kind.substr(0, 40)) + ">");
  }

  Parsed array(pugi::xml_node node, std::size_t depth) {
    NSArray values;
    for (auto child = nextElement(node.first_child()); child; child = nextElement(child.next_sibling())) {
      values.push_back(IOS_TRY(convert(child, depth + 1)));
    }
    return PropertyList(std::move(values));
  }

  Parsed dictionary(pugi::xml_node node, std::size_t depth) {
    NSDictionary members;
    for (auto child = nextElement(node.first_child()); child; child = nextElement(child.next_sibling())) {
      if (std::string_view(child.name()) != "key")
        return fail(child, "has a value without a <key> in a <dict>");
      auto key = IOS_TRY(content(child));
      const auto valueNode = nextElement(child.next_sibling());
      if (!valueNode) return fail(child, "has a <key> without a value");
      auto value = IOS_TRY(convert(valueNode, depth + 1));
      if (!members.emplace(std::move(key), std::move(value)).second)
        return fail(child, "has a <key> twice in a <dict>");
      child = valueNode;
    }
    // How the XML form writes references of archives.
    if (members.size() == 1 && members.begin()->first == "CF$UID") {
      const auto* index = members.begin()->second.integer();
      if (index && *index >= 0) return PropertyList(PropertyList::UID{static_cast<std::uint64_t>(*index)});
    }
    return PropertyList(std::move(members));
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t values_ = 0, held_ = 0;
};

}  // namespace

Parsed parseXML(std::span<const std::uint8_t> bytes) {
  return Reader(bytes).read();
}

}  // namespace ios::plist
