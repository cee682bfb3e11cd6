#include "simulator/live/Survey.h"

namespace simulator {
namespace {

using ios::NSArray;
using ios::NSDictionary;

NSArray frameOf(const ios::CGRect& frame) {
  return {frame.minX(), frame.minY(), frame.width(), frame.height()};
}

NSDictionary describe(const ios::ViewNode& node) {
  NSArray children;
  for (const auto& child : node.children) children.push_back(describe(child));
  return {{"class", node.className},
          {"frame", frameOf(node.frame)},
          {"label", node.label},
          {"role", node.role},
          {"enabled", node.enabled},
          {"hidden", node.hidden},
          {"children", std::move(children)}};
}

}  // namespace

NSDictionary elementsValue(const std::vector<ios::VisibleElement>& elements) {
  NSArray described;
  for (const auto& element : elements) {
    described.push_back(NSDictionary{{"text", element.text},
                                     {"identifier", element.identifier},
                                     {"role", element.role},
                                     {"frame", frameOf(element.frame)},
                                     {"enabled", element.enabled},
                                     {"focusable", element.focusable},
                                     {"selected", element.selected},
                                     {"on", element.on}});
  }
  return {{"elements", std::move(described)}};
}

NSDictionary treeValue(const ios::automation::Tree::Answer& tree) {
  NSArray windows;
  for (const auto& window : tree.windows) windows.push_back(describe(window));
  return {{"top", tree.top}, {"tree", std::move(windows)}};
}

}  // namespace simulator
