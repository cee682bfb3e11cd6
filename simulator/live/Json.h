#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CoreFoundation/PropertyList.h"

namespace simulator {

/// A value as JSON on one line; the same value gives the same text. Ill-formed UTF-8 becomes U+FFFD. Data and
/// archive references have no JSON form: they become empty texts.
std::string jsonText(const ios::PropertyList& value);

/// Reads a JSON object of at most eight levels. Empty when `text` is anything else, or has a null in it: there is
/// no value to stand for it.
std::optional<ios::NSDictionary> readJson(std::string_view text);

/// A JSON number, whole or not; empty if `value` is null or not a number.
std::optional<double> numberIn(const ios::PropertyList* value);

}  // namespace simulator
