#pragma once

#include <yaml-cpp/yaml.h>

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulator {

/// What is wrong with a flow, in the form "file:line: what". Thrown and caught inside the reader.
class FlowError : public std::runtime_error {
 public:
  FlowError(const std::string& file, int line, const std::string& what)
      : std::runtime_error(file + ":" + (line > 0 ? std::to_string(line) + ":" : "") + " " + what) {}
};

using Variables = std::map<std::string, std::string>;

/// A value in a flow file, which knows where it stands. Its operations throw a FlowError at that place.
class YamlValue {
 public:
  YamlValue(std::string file, std::string command, YAML::Node node, int line, const Variables* variables)
      : file_(std::move(file)),
        command_(std::move(command)),
        node_(node),
        line_(line),
        variables_(variables) {}

  const std::string& file() const { return file_; }
  int line() const { return line_; }
  const YAML::Node& node() const { return node_; }
  const Variables& variables() const { return *variables_; }
  [[noreturn]] void fail(const std::string& what) const;

  bool isNull() const { return !node_.IsDefined() || node_.IsNull(); }
  /// A scalar, its ${NAME}s replaced.
  std::string text() const;
  double number(double least, double most) const;
  int integer(int least, int most) const;
  bool boolean() const;
  std::vector<YamlValue> list() const;
  /// The members of a map in the file's order; a key that comes twice is an error.
  std::vector<std::pair<std::string, YamlValue>> members() const;
  /// Members of a map that may have these keys only.
  std::map<std::string, YamlValue> members(const std::vector<std::string>& known) const;

 private:
  YamlValue child(const YAML::Node& node) const;
  std::string file_, command_;
  YAML::Node node_;
  int line_;
  const Variables* variables_;
};

std::string lowerCase(std::string text);

}  // namespace simulator
