#include "Foundation/NSPredicate.h"

#include <strings.h>

#include <cctype>
#include <charconv>
#include <optional>
#include <utility>

#include "ObjectiveC/Programming.h"

namespace ios {

struct NSPredicate::Node {
  enum class Kind { equal, unequal, both, either, negation };
  Kind kind = Kind::equal;
  std::string key;     // of a comparison
  PropertyList value;  // of a comparison
  std::vector<std::shared_ptr<const Node>> parts;
};

namespace {

using Node = NSPredicate::Node;
using NodePointer = std::shared_ptr<const Node>;
using Kind = Node::Kind;

// Deeper formats are nobody's; the parser would run out of stack.
constexpr int kMostLevels = 100;

bool isSpace(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}
bool isWordStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}
bool isWord(char c) {
  return isWordStart(c) || std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.';
}

class Parser {
 public:
  Parser(const std::string& format, std::vector<PropertyList> arguments)
      : format_(format), arguments_(std::move(arguments)) {}

  NodePointer parse() {
    NodePointer root = either(0);
    skipSpace();
    if (at_ != format_.size()) refuse("there is more after its end");
    if (used_ != arguments_.size()) refuse("it was given too many arguments");
    return root;
  }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    programmingError("unable to parse the format string \"" + format_ + "\": " + why + " (at " +
                     std::to_string(at_) + ")");
  }

  void skipSpace() {
    while (at_ < format_.size() && isSpace(format_[at_])) ++at_;
  }
  bool take(const std::string& text) {
    skipSpace();
    if (format_.compare(at_, text.size(), text) != 0) return false;
    at_ += text.size();
    return true;
  }
  std::string word() const {
    std::size_t end = at_;
    if (end < format_.size() && isWordStart(format_[end])) {
      while (end < format_.size() && isWord(format_[end])) ++end;
    }
    return format_.substr(at_, end - at_);
  }
  bool takeWord(const char* keyword) {
    skipSpace();
    const std::string next = word();
    if (strcasecmp(next.c_str(), keyword) != 0) return false;
    at_ += next.size();
    return true;
  }

  NodePointer joined(Kind kind, std::vector<NodePointer> parts) {
    if (parts.size() == 1) return parts.front();
    auto node = std::make_shared<Node>();
    node->kind = kind;
    node->parts = std::move(parts);
    return node;
  }

  NodePointer either(int level) {
    if (level > kMostLevels) refuse("it nests too deeply");
    std::vector<NodePointer> parts{both(level)};
    while (takeWord("OR") || take("||")) parts.push_back(both(level));
    return joined(Kind::either, std::move(parts));
  }
  NodePointer both(int level) {
    std::vector<NodePointer> parts{single(level)};
    while (takeWord("AND") || take("&&")) parts.push_back(single(level));
    return joined(Kind::both, std::move(parts));
  }
  NodePointer single(int level) {
    if (level > kMostLevels) refuse("it nests too deeply");
    if (takeWord("NOT") || take("!")) {
      auto node = std::make_shared<Node>();
      node->kind = Kind::negation;
      node->parts = {single(level + 1)};
      return node;
    }
    if (take("(")) {
      NodePointer inner = either(level + 1);
      if (!take(")")) refuse("a \")\" is missing");
      return inner;
    }
    return comparison();
  }

  NodePointer comparison() {
    auto node = std::make_shared<Node>();
    std::optional<PropertyList> left = value();
    if (!left) node->key = key();
    node->kind = comparator();
    if (left) {
      node->value = std::move(*left);
      node->key = key();
      return node;
    }
    std::optional<PropertyList> right = value();
    if (!right) refuse("a key is compared with no value");
    node->value = std::move(*right);
    return node;
  }

  Kind comparator() {
    if (take("!=") || take("<>")) return Kind::unequal;
    if (take("==") || take("=")) {
      if (at_ < format_.size() && format_[at_] == '[') refuse("options of a comparison are not known");
      return Kind::equal;
    }
    refuse("this comparison is not known");
  }

  std::string key() {
    skipSpace();
    const std::string name = word();
    for (const char* reserved : {"", "AND", "OR", "NOT", "TRUE", "FALSE", "YES", "NO", "NIL", "NULL",
                                 "TRUEPREDICATE", "FALSEPREDICATE", "SELF", "ANY", "ALL", "NONE", "SOME"}) {
      if (strcasecmp(name.c_str(), reserved) == 0) refuse("a key is missing");
    }
    at_ += name.size();
    return name;
  }

  std::optional<PropertyList> value() {
    skipSpace();
    if (at_ == format_.size()) return std::nullopt;
    const char first = format_[at_];
    if (first == '%') {
      if (!take("%@")) refuse("only arguments of the form %@ are known");
      if (used_ == arguments_.size()) refuse("it was given too few arguments");
      return arguments_[used_++];
    }
    if (first == '"' || first == '\'') return quoted(first);
    if (first == '-' || std::isdigit(static_cast<unsigned char>(first)) != 0) return numeral();
    return std::nullopt;
  }

  PropertyList quoted(char quote) {
    std::string text;
    for (++at_; at_ < format_.size() && format_[at_] != quote; ++at_) {
      if (format_[at_] == '\\' && ++at_ == format_.size()) break;
      text += format_[at_];
    }
    if (at_ == format_.size()) refuse("a text has no end");
    ++at_;
    return text;
  }

  PropertyList numeral() {
    const char* begin = format_.data() + at_;
    const char* end = format_.data() + format_.size();
    std::int64_t whole = 0;
    double real = 0;
    const auto asWhole = std::from_chars(begin, end, whole);
    const auto asReal = std::from_chars(begin, end, real);
    if (asReal.ec != std::errc()) refuse("a number is none");
    at_ += static_cast<std::size_t>(asReal.ptr - begin);
    if (asWhole.ec == std::errc() && asWhole.ptr == asReal.ptr) return whole;
    return real;
  }

  const std::string& format_;
  std::vector<PropertyList> arguments_;
  std::size_t at_ = 0, used_ = 0;
};

std::optional<double> number(const PropertyList& value) {
  if (const auto* integer = value.integer()) return static_cast<double>(*integer);
  if (const auto* real = value.real()) return *real;
  return std::nullopt;
}

bool equal(const PropertyList& a, const PropertyList& b) {
  if (a.integer() && b.integer()) return a == b;
  const auto one = number(a), other = number(b);
  return one && other ? *one == *other : a == b;
}

bool holds(const Node& node, const NSDictionary& values) {
  switch (node.kind) {
    case Kind::equal:
    case Kind::unequal: {
      const auto found = values.find(node.key);
      if (found == values.end()) programmingError("the object has no value for the key \"" + node.key + "\"");
      return equal(found->second, node.value) == (node.kind == Kind::equal);
    }
    case Kind::both:
      for (const auto& part : node.parts) {
        if (!holds(*part, values)) return false;
      }
      return true;
    case Kind::either:
      for (const auto& part : node.parts) {
        if (holds(*part, values)) return true;
      }
      return false;
    case Kind::negation:
      return !holds(*node.parts.front(), values);
  }
  return false;
}

void collectKeys(const Node& node, std::set<std::string>& keys) {
  if (node.parts.empty()) keys.insert(node.key);
  for (const auto& part : node.parts) collectKeys(*part, keys);
}

}  // namespace

std::shared_ptr<NSPredicate> NSPredicate::predicateWithFormat(const std::string& format,
                                                              std::vector<PropertyList> arguments) {
  return std::make_shared<NSPredicate>(Parser(format, std::move(arguments)).parse());
}

bool NSPredicate::evaluateWithObject(const NSDictionary& values) const {
  return holds(*root_, values);
}

std::set<std::string> NSPredicate::keys() const {
  std::set<std::string> keys;
  collectKeys(*root_, keys);
  return keys;
}

}  // namespace ios
