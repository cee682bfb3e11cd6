#include "simulator/flow/Selector.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "simulator/flow/Words.h"

namespace simulator {
namespace {

using ios::CGRect;
using ios::VisibleElement;
using Elements = std::vector<VisibleElement>;
using Found = std::vector<const VisibleElement*>;
using Relation = Selector::Relation;

constexpr std::size_t kLongText = 200;  // characters
constexpr double kSquare = 0.03;        // how far the sides of a square may differ, as a part of the longer

std::size_t characters(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool hasTrait(const VisibleElement& element, Selector::Trait trait) {
  const double width = element.frame.width(), height = element.frame.height();
  switch (trait) {
    case Selector::Trait::text:
      return !element.text.empty();
    case Selector::Trait::longText:
      return characters(element.text) >= kLongText;
    case Selector::Trait::square:
      return std::abs(width - height) <= kSquare * std::max(width, height);
  }
  return false;
}

bool isWithin(const VisibleElement& element, const VisibleElement& container, const Elements& all) {
  for (int above = element.parent; above >= 0; above = all[static_cast<std::size_t>(above)].parent) {
    if (&all[static_cast<std::size_t>(above)] == &container) return true;
  }
  return false;
}

bool isChild(const VisibleElement& element, const VisibleElement& container, const Elements& all) {
  return element.parent >= 0 && &all[static_cast<std::size_t>(element.parent)] == &container;
}

bool isPlaced(const VisibleElement& element, Relation relation, const VisibleElement& other) {
  const CGRect &a = element.frame, &b = other.frame;
  switch (relation) {
    case Relation::below:
      return a.midY() > b.maxY();
    case Relation::above:
      return a.midY() < b.minY();
    case Relation::leftOf:
      return a.midX() < b.minX();
    case Relation::rightOf:
      return a.midX() > b.maxX();
    default:
      return false;
  }
}

bool isGeometric(Relation relation) {
  return relation < Relation::childOf;
}

bool holds(const VisibleElement& element, Relation relation, const VisibleElement& other,
           const Elements& all) {
  if (&element == &other) return false;
  if (relation == Relation::childOf) return isWithin(element, other, all);
  if (relation == Relation::containsChild) return isChild(other, element, all);
  if (relation == Relation::containsDescendant) return isWithin(other, element, all);
  return isPlaced(element, relation, other);
}

bool fitsAlone(const VisibleElement& element, const Selector& selector) {
  const auto near = [&](const std::optional<double>& wanted, double found) {
    return !wanted || std::abs(*wanted - found) <= selector.tolerance;
  };
  const auto same = [](const std::optional<bool>& wanted, bool found) { return !wanted || *wanted == found; };
  return (!selector.text || (!element.text.empty() && selector.text->matches(element.text))) &&
         (!selector.id || (!element.identifier.empty() && selector.id->matches(element.identifier))) &&
         near(selector.width, element.frame.width()) && near(selector.height, element.frame.height()) &&
         same(selector.enabled, element.enabled) && same(selector.selected, element.selected) &&
         same(selector.checked, element.on) && same(selector.focused, false) &&
         std::all_of(selector.traits.begin(), selector.traits.end(),
                     [&](Selector::Trait trait) { return hasTrait(element, trait); });
}

int worth(const VisibleElement& element, const Selector& selector) {
  const bool exactly = (selector.text && selector.text->isExactly(element.text)) ||
                       (!selector.text && selector.id && selector.id->isExactly(element.identifier));
  return (exactly ? 2 : 0) + (element.control ? 1 : 0);
}

struct Candidate {
  const VisibleElement* element;
  double away = 0;  // from what it is beside
};

double distance(const CGRect& a, const CGRect& b) {
  return std::hypot(a.midX() - b.midX(), a.midY() - b.midY());
}

/// Leaves those that stand in the relation to any of `others`.
void relate(std::vector<Candidate>& candidates, Relation relation, const Found& others, const Elements& all) {
  std::erase_if(candidates, [&](Candidate& candidate) {
    double least = std::numeric_limits<double>::infinity();
    for (const VisibleElement* other : others) {
      if (holds(*candidate.element, relation, *other, all))
        least = std::min(least, isGeometric(relation) ? distance(candidate.element->frame, other->frame) : 0);
    }
    candidate.away += std::isinf(least) ? 0 : least;
    return std::isinf(least);
  });
}

/// From the top left on; what is in the same line counts from the left.
bool isBefore(const VisibleElement* a, const VisibleElement* b) {
  return std::pair(std::round(a->frame.minY()), a->frame.minX()) <
         std::pair(std::round(b->frame.minY()), b->frame.minX());
}

Found inOrder(std::vector<Candidate> candidates, const Selector& selector) {
  Found found;
  if (selector.index) {
    for (const Candidate& candidate : candidates) found.push_back(candidate.element);
    std::stable_sort(found.begin(), found.end(), isBefore);
    const auto count = static_cast<int>(found.size());
    const int place = *selector.index < 0 ? count + *selector.index : *selector.index;
    if (place < 0 || place >= count) return {};
    return {found[static_cast<std::size_t>(place)]};
  }
  std::reverse(candidates.begin(), candidates.end());  // the front first
  std::stable_sort(candidates.begin(), candidates.end(), [&](const Candidate& a, const Candidate& b) {
    return std::pair(a.away, -worth(*a.element, selector)) < std::pair(b.away, -worth(*b.element, selector));
  });
  for (const Candidate& candidate : candidates) found.push_back(candidate.element);
  return found;
}

std::string inWords(Relation relation) {
  switch (relation) {
    case Relation::below:
      return "below";
    case Relation::above:
      return "above";
    case Relation::leftOf:
      return "left of";
    case Relation::rightOf:
      return "right of";
    case Relation::childOf:
      return "in";
    case Relation::containsChild:
      return "directly around";
    case Relation::containsDescendant:
      return "around";
  }
  return {};
}

std::string inWords(Selector::Trait trait) {
  if (trait == Selector::Trait::text) return "with a text";
  return trait == Selector::Trait::square ? "square" : "with a long text";
}

}  // namespace

Found elementsThatFit(const Selector& selector, const Elements& elements) {
  std::vector<Candidate> candidates;
  for (const VisibleElement& element : elements) {
    if (fitsAlone(element, selector)) candidates.push_back({&element});
  }
  for (const auto& [relation, other] : selector.relations) {
    if (candidates.empty()) break;
    relate(candidates, relation, elementsThatFit(other, elements), elements);
  }
  return inOrder(std::move(candidates), selector);
}

std::string Selector::described(const std::string& open, const std::string& close) const {
  std::vector<std::string> parts;
  if (text) parts.push_back(open + text->text() + close);
  if (id) parts.push_back("id " + open + id->text() + close);
  if (index) parts.push_back("number " + std::to_string(*index));
  if (width) parts.push_back(plainNumber(*width) + " wide");
  if (height) parts.push_back(plainNumber(*height) + " high");
  const std::pair<std::optional<bool>, const char*> states[] = {
      {enabled, "enabled"}, {selected, "selected"}, {checked, "checked"}, {focused, "focused"}};
  for (const auto& [wanted, word] : states) {
    if (wanted) parts.push_back((*wanted ? "" : "not ") + std::string(word));
  }
  for (const Trait trait : traits) parts.push_back(inWords(trait));
  for (const auto& [relation, other] : relations)
    parts.push_back(inWords(relation) + " " + other.described(open, close));
  return joined(parts);
}

}  // namespace simulator
