#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "UIKit/Private/NibDocument.h"
#include "UIKit/UIButton.h"
#include "UIKit/UIImage.h"
#include "UIKit/UILabel.h"

namespace ios {

/// The results and the state of one reading of an interface file.
struct NibReading {
  /// The text under a key of the user's language, given what the document says.
  std::function<std::string(const std::string& key, const std::string& base)> localized;
  std::function<std::shared_ptr<UIImage>(const std::string& name)> image;
  std::function<void(const std::string& problem)> report;
  /// Whether the document's left-to-right layout is to be mirrored.
  bool mirrored = false;

  std::map<std::string, id> objects;  // by the document's identifiers
  struct Connections {
    id source;
    const NibElement* list;  // its `<connections>`
  };
  std::vector<Connections> connections;  // in the document's order
};

/// "<label id="a-b">", as messages name an element.
std::string described(const NibElement& element);

/// The view that an element describes, with its subviews; empty, and reported, when it does not describe one.
std::shared_ptr<UIView> makeNibView(const NibElement& element, NibReading& reading);

/// A `<color>`; empty, and reported, when it is unknown.
std::shared_ptr<UIColor> nibColor(const NibElement& element, NibReading& reading);
/// A `<fontDescription>`; empty, and reported, when the machine has no such font.
std::shared_ptr<UIFont> nibFont(const NibElement& element, NibReading& reading);

}  // namespace ios
