#include "CoreFoundation/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <string_view>

#include "CoreFoundation/Private/PropertyList.h"
#include "CoreFoundation/Unicode.h"

namespace ios {
namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

enum class Form { binary, xml };

/// The string as libplist, which takes C strings, and readers of the format can hold it.
std::string writable(const std::string& text, Form form) {
  const auto held = [form](char c) {
    if (form == Form::binary) return c != '\0';
    return static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n' || c == '\r';
  };
  if (std::all_of(text.begin(), text.end(), held) && isUTF8(text)) return text;
  std::string repaired;
  for (const char c : repairedUTF8(text)) {
    if (held(c)) {
      repaired += c;
    } else {
      appendUTF8(repaired, 0xFFFD);
    }
  }
  return repaired;
}

struct Writer {
  Form form;
  plist_t operator()(bool value) const { return plist_new_bool(value); }
  plist_t operator()(std::int64_t value) const { return plist_new_uint(static_cast<std::uint64_t>(value)); }
  plist_t operator()(double value) const { return plist_new_real(value); }
  plist_t operator()(const std::string& value) const {
    return plist_new_string(writable(value, form).c_str());
  }
  plist_t operator()(const Bytes& value) const {
    return plist_new_data(reinterpret_cast<const char*>(value.data()), value.size());
  }
  plist_t operator()(PropertyList::UID value) const { return plist_new_uid(value.index); }
  plist_t operator()(const NSArray& values) const {
    plist_t array = plist_new_array();
    for (const auto& value : values) plist_array_append_item(array, std::visit(*this, value.value()));
    return array;
  }
  plist_t operator()(const NSDictionary& members) const {
    plist_t dictionary = plist_new_dict();
    for (const auto& [key, value] : members) {
      plist_dict_set_item(dictionary, writable(key, form).c_str(), std::visit(*this, value.value()));
    }
    return dictionary;
  }
};

bool beginsAsXML(std::span<const std::uint8_t> bytes) {
  // Behind a byte order mark and blanks; in UTF-16 every other byte is zero.
  for (const auto byte : bytes) {
    if (byte == '<') return true;
    constexpr std::string_view kSkipped("\xEF\xBB\xBF\xFE\xFF \t\r\n\0", 10);
    if (kSkipped.find(static_cast<char>(byte)) == std::string_view::npos) return false;
  }
  return false;
}

plist::Parsed parsedBytes(std::span<const std::uint8_t> bytes) {
  const std::string_view start(reinterpret_cast<const char*>(bytes.data()),
                               std::min<std::size_t>(bytes.size(), 6));
  if (start == "bplist") return plist::parseBinary(bytes);
  if (beginsAsXML(bytes)) return plist::parseXML(bytes);
  return failure(std::string(bytes.empty() ? "is empty" : "is neither an XML nor a binary property list"));
}

Result<Bytes, std::string> contentOf(const std::filesystem::path& file) {
  const auto fail = [](const char* what) { return failure(std::string(what)); };
  std::error_code error;
  // A pipe or a device would block the reader.
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) return fail("does not exist");
  const auto size = std::filesystem::is_regular_file(status) ? std::filesystem::file_size(file, error) : 0;
  if (!std::filesystem::is_regular_file(status) || error) return fail("is not a readable file");
  if (size > plist::kMaximumBytes) return fail("is larger than 256 MB");
  Bytes bytes(size);
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size)))
    return fail("cannot be read");
  return bytes;
}

}  // namespace

PropertyList::PropertyList() : value_(std::string()) {}
PropertyList::PropertyList(bool value) : value_(value) {}
PropertyList::PropertyList(int value) : value_(std::int64_t{value}) {}
PropertyList::PropertyList(std::int64_t value) : value_(value) {}
PropertyList::PropertyList(double value) : value_(value) {}
PropertyList::PropertyList(const char* value) : value_(std::string(value)) {}
PropertyList::PropertyList(std::string value) : value_(std::move(value)) {}
PropertyList::PropertyList(Bytes value) : value_(std::move(value)) {}
PropertyList::PropertyList(NSArray value) : value_(std::move(value)) {}
PropertyList::PropertyList(NSDictionary value) : value_(std::move(value)) {}
PropertyList::PropertyList(UID value) : value_(value) {}
PropertyList::PropertyList(const PropertyList& other) = default;
PropertyList::PropertyList(PropertyList&& other) noexcept = default;
PropertyList& PropertyList::operator=(const PropertyList& other) = default;
PropertyList& PropertyList::operator=(PropertyList&& other) noexcept = default;
PropertyList::~PropertyList() = default;
bool PropertyList::operator==(const PropertyList& other) const {
  return value_ == other.value_;
}

const PropertyList* PropertyList::member(const std::string& key) const {
  const NSDictionary* members = dictionary();
  if (!members) return nullptr;
  const auto found = members->find(key);
  return found == members->end() ? nullptr : &found->second;
}

const std::string* PropertyList::text(const std::string& key) const {
  const PropertyList* value = member(key);
  return value ? value->text() : nullptr;
}

double numberAt(const NSDictionary& values, const std::string& key, double missing) {
  const auto found = values.find(key);
  if (found == values.end()) return missing;
  if (const auto* integer = found->second.integer()) return static_cast<double>(*integer);
  if (const auto* real = found->second.real()) return *real;
  return std::numeric_limits<double>::quiet_NaN();
}

std::optional<PropertyList> PropertyList::parse(std::span<const std::uint8_t> bytes, std::string* problem) {
  auto parsed = parsedBytes(bytes);
  if (parsed) return *std::move(parsed);
  if (problem) *problem = parsed.error();
  return std::nullopt;
}

std::optional<PropertyList> PropertyList::parse(const std::filesystem::path& file, std::string* problem) {
  const auto bytes = contentOf(file);
  if (bytes) return parse(*bytes, problem);
  if (problem) *problem = bytes.error();
  return std::nullopt;
}

Bytes PropertyList::binary() const {
  const Node root(std::visit(Writer{Form::binary}, value_), &plist_free);
  char* written = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(root.get(), &written, &length);
  const std::unique_ptr<char, decltype(&plist_to_bin_free)> owned(written, &plist_to_bin_free);
  return Bytes(written, written + length);
}

std::string PropertyList::xml() const {
  const Node root(std::visit(Writer{Form::xml}, value_), &plist_free);
  char* written = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root.get(), &written, &length);
  const std::unique_ptr<char, decltype(&plist_to_xml_free)> owned(written, &plist_to_xml_free);
  return std::string(written, length);
}

}  // namespace ios
