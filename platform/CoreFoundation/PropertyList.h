#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace ios {

class PropertyList;
using NSArray = std::vector<PropertyList>;
using NSDictionary = std::map<std::string, PropertyList>;
using Bytes = std::vector<std::uint8_t>;

/// A value of property-list data: Info dictionaries, user info, settings, records, archives. It keeps
/// integer, double, Boolean, text, data, array and dictionary apart, as the platform's numbers do. A plain
/// value; texts are UTF-8.
class PropertyList {
 public:
  /// A reference inside an archive; only the keyed archiver makes them.
  struct UID {
    std::uint64_t index = 0;
    bool operator==(const UID&) const = default;
  };

  // Out of line, like what copies and destroys: every caller would carry the variant's whole machinery.
  PropertyList();
  PropertyList(bool value);          // NOLINT: values read as what they hold
  PropertyList(int value);           // NOLINT
  PropertyList(std::int64_t value);  // NOLINT
  PropertyList(double value);        // NOLINT
  PropertyList(const char* value);   // NOLINT
  PropertyList(std::string value);   // NOLINT
  PropertyList(Bytes value);         // NOLINT
  PropertyList(NSArray value);       // NOLINT
  PropertyList(NSDictionary value);  // NOLINT
  PropertyList(UID value);           // NOLINT
  PropertyList(const PropertyList& other);
  PropertyList(PropertyList&& other) noexcept;
  PropertyList& operator=(const PropertyList& other);
  PropertyList& operator=(PropertyList&& other) noexcept;
  ~PropertyList();

  /// The value if it is of exactly that kind, else null: an integer is not read as a double, nor a
  /// Boolean as an integer.
  const bool* boolean() const { return std::get_if<bool>(&value_); }
  const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
  const double* real() const { return std::get_if<double>(&value_); }
  const std::string* text() const { return std::get_if<std::string>(&value_); }
  const Bytes* data() const { return std::get_if<Bytes>(&value_); }
  const NSArray* array() const { return std::get_if<NSArray>(&value_); }
  const NSDictionary* dictionary() const { return std::get_if<NSDictionary>(&value_); }
  const UID* uid() const { return std::get_if<UID>(&value_); }

  /// Member `key` of a dictionary; null if this is not one or has no such member.
  const PropertyList* member(const std::string& key) const;
  /// Member `key` if it is a text.
  const std::string* text(const std::string& key) const;

  bool operator==(const PropertyList& other) const;

  /// Reads an XML or a binary property list. Empty when the bytes are neither, are damaged, nest deeper than
  /// 512 levels or unfold to more than 1,000,000 values or 256 MB of texts and data; `problem`, if given,
  /// says which. A date is read as a text: "2026-01-05T09:41:00Z".
  static std::optional<PropertyList> parse(std::span<const std::uint8_t> bytes,
                                           std::string* problem = nullptr);
  static std::optional<PropertyList> parse(const std::filesystem::path& file, std::string* problem = nullptr);
  /// The same value gives the same bytes. What is not UTF-8 in a text, and what the form cannot hold (NUL,
  /// and in XML other control characters), becomes U+FFFD.
  Bytes binary() const;
  std::string xml() const;

  using Value = std::variant<std::string, bool, std::int64_t, double, Bytes, NSArray, NSDictionary, UID>;
  const Value& value() const { return value_; }

 private:
  Value value_;
};

/// Member `key` as a number, integer or double; `missing` when there is none, NaN when it is not a number.
double numberAt(const NSDictionary& values, const std::string& key, double missing);

/// Keys of a bundle's Info dictionary.
inline const std::string kCFBundleVersionKey = "CFBundleVersion";
inline const std::string kCFBundleNameKey = "CFBundleName";
inline const std::string kCFBundleIdentifierKey = "CFBundleIdentifier";

}  // namespace ios
