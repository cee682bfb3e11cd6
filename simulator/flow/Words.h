#pragma once

#include <map>
#include <string>
#include <vector>

#include "Device/Settings.h"

/// Small texts that descriptions and complaints are made of.
namespace simulator {

std::string plainNumber(double value);                          // "1.5"
std::string inWords(int count);                                 // "three"; figures beyond twelve
std::string times(int count);                                   // "twice"
std::string quoted(const std::string& text);                    // "“Save”"
std::string joined(const std::vector<std::string>& parts);      // "a, b, c"
std::string enumerated(const std::vector<std::string>& parts);  // "a, b and c"
std::string listed(const std::vector<std::string>& texts);      // "\"a\", \"b\""; "nothing"
std::string inWords(const std::map<std::string, ios::Permission>& permissions);  // "photos denied"

/// "; did you mean \"tapOn\"?" with the one that is spelt most alike, if one is; empty otherwise.
std::string suggestion(const std::string& name, const std::vector<std::string>& known);

/// The text with "?" for what would steer a terminal: control characters, a NUL among them.
std::string printable(const std::string& text);

}  // namespace simulator
