#pragma once

#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "UIKit/AutomationRequests.h"

namespace simulator {

// What is on the screen, as the audience is told of it.

/// {"elements": [{"text", "role", "frame", "enabled", "focusable"}]}
ios::NSDictionary elementsValue(const std::vector<ios::VisibleElement>& elements);
/// {"top": class, "tree": [{"class", "frame", "label", "role", "enabled", "hidden", "children"}]}
ios::NSDictionary treeValue(const ios::automation::Tree::Answer& tree);

}  // namespace simulator
