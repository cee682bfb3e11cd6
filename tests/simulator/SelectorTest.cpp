#include <gtest/gtest.h>

#include "simulator/flow/FlowReader.h"

namespace {

using namespace simulator;

ios::VisibleElement element(const std::string& name, ios::CGRect frame, int parent = -1) {
  ios::VisibleElement made;
  made.text = name;
  made.frame = frame;
  made.parent = parent;
  return made;
}

// A list of two rows, each with a title, a date and a button, and a bar with a second "Delete" below it.
std::vector<ios::VisibleElement> screen() {
  std::vector<ios::VisibleElement> all = {
      element("", ios::CGRectMake(0, 100, 300, 200)),                    // 0 the list
      element("", ios::CGRectMake(0, 100, 300, 100), 0),                 // 1 a row
      element("Bread", ios::CGRectMake(10, 110, 100, 20), 1),            // 2
      element("Delete", ios::CGRectMake(200, 140, 80, 40), 1),           // 3
      element("", ios::CGRectMake(0, 200, 300, 100), 0),                 // 4 a row
      element("Milk", ios::CGRectMake(10, 210, 100, 20), 4),             // 5
      element("Delete", ios::CGRectMake(200, 240, 80, 40), 4),           // 6
      element("Delete", ios::CGRectMake(10, 400, 80, 80)),               // 7
      element("delete all", ios::CGRectMake(100, 400, 80, 80)),          // 8
      element(std::string(200, 'x'), ios::CGRectMake(0, 500, 300, 90)),  // 9
  };
  all[0].identifier = "list";
  all[1].identifier = all[4].identifier = "row";
  all[3].control = all[6].control = true;
  all[6].enabled = false;
  all[7].selected = true;
  all[8].role = "switch";
  all[8].on = true;
  return all;
}

TEST(Selector, MeansTheElementThatAPersonWould) {
  const struct {
    const char* selector;
    std::vector<int> fit;  // the one that is meant first
  } kCases[] = {
      {"Delete", {6, 3, 7}},  // what can be tapped first, and of that what is in front
      {"{text: Delete, index: 0}", {3}},
      {"{text: Delete, index: -1}", {7}},
      {"{text: Delete, index: 3}", {}},
      {"{text: Delete.*, index: 3}", {8}},
      {"{text: elete}", {}},  // the whole text
      {"{id: row}", {4, 1}},
      {"{text: Delete, below: Milk}", {6, 7}},
      {"{text: Delete, below: Bread}", {3, 6, 7}},  // the nearest first
      {"{text: Delete, above: {text: Milk}}", {3}},
      {"{text: Delete, rightOf: Milk}", {6, 3}},
      {"{text: Delete, leftOf: delete all}", {7}},
      {"{text: Delete, childOf: {id: list}}", {6, 3}},
      {"{text: Delete, childOf: {id: row, containsChild: Bread}}", {3}},
      {"{id: row, containsDescendants: [{text: Milk}, {text: Delete}]}", {4}},
      {"{id: row, containsDescendants: [{text: Milk}, {text: Bread}]}", {}},
      {"{id: list, containsChild: Milk}", {}},  // it is in a row first
      {"{text: Delete, enabled: false}", {6}},
      {"{text: Delete, selected: true}", {7}},
      {"{checked: true}", {8}},
      {"{text: Milk, focused: true}", {}},
      {"{width: 82, height: 41, tolerance: 2, enabled: true}", {3}},
      {"{width: 82, height: 41}", {}},
      {"{traits: [square], text: .*}", {8, 7}},
      {"{traits: long-text}", {9}},
      {"{below: {text: Nowhere}}", {}},
  };
  const auto elements = screen();
  const auto context = std::make_shared<FlowContext>();
  for (const auto& c : kCases) {
    const YamlValue value(context, "", YAML::Load(c.selector), 1, 1);
    std::vector<int> fit;
    for (const auto* found : elementsThatFit(selector(value), elements))
      fit.push_back(static_cast<int>(found - elements.data()));
    EXPECT_EQ(fit, c.fit) << c.selector;
  }
}

}  // namespace
