#include <algorithm>
#include <array>

#include "UIKit/Private/NibViews.h"

namespace ios {
namespace {

constexpr double kDefaultFontSize = 17, kLargestFontSize = 500;

struct NamedColor {
  std::string_view name;
  CGColor color;
};
constexpr std::array kSystemColors{
    NamedColor{"darkTextColor", {0, 0, 0, 1}},
    NamedColor{"lightTextColor", {1, 1, 1, 0.6}},
    NamedColor{"groupTableViewBackgroundColor", {0.937, 0.937, 0.957, 1}},
};

struct NamedWeight {
  std::string_view name;
  int weight;
};
constexpr std::array kWeights{
    NamedWeight{"ultraLight", 100}, NamedWeight{"thin", 200},   NamedWeight{"light", 300},
    NamedWeight{"regular", 400},    NamedWeight{"medium", 500}, NamedWeight{"semibold", 600},
    NamedWeight{"bold", 700},       NamedWeight{"heavy", 800},  NamedWeight{"black", 900}};

std::optional<double> share(const NibElement& element, std::string_view attribute) {
  const auto value = element.number(attribute);
  return value ? std::optional(std::clamp(*value, 0.0, 1.0)) : std::nullopt;
}

}  // namespace

std::string described(const NibElement& element) {
  std::string text = "<" + element.name;
  for (const char* attribute : {"id", "key"}) {
    if (const std::string* value = element.find(attribute))
      return text + " " + attribute + "=\"" + *value + "\">";
  }
  return text + ">";
}

std::shared_ptr<UIColor> nibColor(const NibElement& element, NibReading& reading) {
  const auto alpha = share(element, "alpha").value_or(1);
  const auto red = share(element, "red"), green = share(element, "green"), blue = share(element, "blue");
  if (red && green && blue) return UIColor::colorWithRedGreenBlueAlpha(*red, *green, *blue, alpha);
  if (const auto white = share(element, "white")) return UIColor::colorWithWhiteAlpha(*white, alpha);
  const std::string name = element.text("cocoaTouchSystemColor");
  for (const auto& known : kSystemColors) {
    if (known.name == name) return std::make_shared<UIColor>(known.color);
  }
  reading.report(described(element) + " is not a known color");
  return nullptr;
}

std::shared_ptr<UIFont> nibFont(const NibElement& element, NibReading& reading) {
  double size = element.number("pointSize").value_or(kDefaultFontSize);
  if (size <= 0 || size > kLargestFontSize) size = kDefaultFontSize;
  if (const std::string* name = element.find("name")) {
    auto font = UIFont::fontWithNameSize(*name, size);
    if (!font) reading.report("there is no font named \"" + *name + "\"");
    return font;
  }
  if (element.text("type") == "boldSystem") return UIFont::boldSystemFontOfSize(size);
  const std::string weight = element.text("weight");
  for (const auto& known : kWeights) {
    if (known.name == weight) return UIFont::systemFontOfSize(size, known.weight);
  }
  return UIFont::systemFontOfSize(size);
}

}  // namespace ios
