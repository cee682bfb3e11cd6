#include "Foundation/NSUserDefaults.h"

#include <strings.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <map>
#include <vector>

namespace ios {
namespace {

std::vector<std::string> commandLine() {
  std::ifstream stream("/proc/self/cmdline", std::ios::binary);
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(stream, argument, '\0');) arguments.push_back(argument);
  return arguments;
}

/// "-3" is a value, "-debug" the next key.
bool isKey(const std::string& argument) {
  return argument.size() > 1 && argument[0] == '-' && std::isalpha(static_cast<unsigned char>(argument[1]));
}

const std::map<std::string, std::string>& argumentDomain() {
  static const auto& domain = *new std::map<std::string, std::string>([] {
    std::map<std::string, std::string> values;
    const auto arguments = commandLine();
    for (std::size_t i = 1; i + 1 < arguments.size(); ++i) {
      if (!isKey(arguments[i]) || isKey(arguments[i + 1])) continue;
      values[arguments[i].substr(1)] = arguments[i + 1];
      ++i;
    }
    return values;
  }());
  return domain;
}

}  // namespace

const std::shared_ptr<NSUserDefaults>& NSUserDefaults::standardUserDefaults() {
  static auto& defaults = *new std::shared_ptr<NSUserDefaults>(std::make_shared<NSUserDefaults>());
  return defaults;
}

std::optional<std::string> NSUserDefaults::stringForKey(const std::string& key) const {
  const auto found = argumentDomain().find(key);
  if (found == argumentDomain().end()) return std::nullopt;
  return found->second;
}

bool NSUserDefaults::boolForKey(const std::string& key) const {
  const auto text = stringForKey(key);
  if (!text) return false;
  return strcasecmp(text->c_str(), "YES") == 0 || strcasecmp(text->c_str(), "true") == 0 ||
         std::strtod(text->c_str(), nullptr) != 0;
}

}  // namespace ios
