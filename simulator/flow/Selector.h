#pragma once

#include <optional>
#include <string>
#include <vector>

#include "UIKit/VisibleElements.h"
#include "simulator/phone/TextPattern.h"

namespace simulator {

/// Which element on the screen is meant. Whatever is said must hold.
struct Selector {
  enum class Trait { text, longText, square };
  enum class Relation { below, above, leftOf, rightOf, childOf, containsChild, containsDescendant };
  std::optional<TextPattern> text, id;
  std::optional<int> index;  // of several, from the top left on; below 0 from the end
  std::optional<double> width, height;
  double tolerance = 0;  // of width and height, in points
  std::optional<bool> enabled, selected, checked, focused;
  std::vector<Trait> traits;
  struct Related;
  std::vector<Related> relations;

  /// As in "“Save” below “Title”".
  std::string description() const { return described("“", "”"); }
  /// The same with plain quotes, for complaints.
  std::string inPlainQuotes() const { return described("\"", "\""); }

 private:
  std::string described(const std::string& open, const std::string& close) const;
};

struct Selector::Related {
  Relation relation;
  Selector other;
};

/// The elements that fit, the one that is meant first. Without an index that is, of those beside, above or below another
/// element, the nearest to it; a text itself before an expression that matches, what can be tapped before what is only
/// to be read, what is in front before what is behind.
std::vector<const ios::VisibleElement*> elementsThatFit(const Selector& selector,
                                                        const std::vector<ios::VisibleElement>& elements);

}  // namespace simulator
