#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ios {

/// A URL; a value. Valid or not as the platform judges: RFC 3986's characters, percent escapes complete.
class NSURL {
 public:
  /// Empty when `text` is not a valid URL: it is empty, or holds a blank, a control character, one
  /// outside ASCII or any of `"<>\^{|}` and the backtick, or a "%" without two hexadecimal digits, or
  /// an unbalanced "[".
  static std::optional<NSURL> URLWithString(const std::string& text);
  static NSURL fileURLWithPath(const std::filesystem::path& path);

  const std::string& absoluteString() const { return text_; }
  /// Lower case is not forced: "Tellvane". Empty when there is none.
  std::string scheme() const;
  /// Without user, port and the brackets of an address.
  std::string host() const;
  /// Percent escapes decoded.
  std::string path() const;
  std::string query() const;
  bool isFileURL() const { return scheme() == "file"; }
  /// Of a file URL.
  std::filesystem::path filePath() const { return path(); }

  bool operator==(const NSURL&) const = default;

 private:
  explicit NSURL(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

}  // namespace ios
