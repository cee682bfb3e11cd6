#include "UIKit/Private/NibConnections.h"

#include <array>
#include <cctype>

namespace ios {
namespace {

struct NamedEvent {
  std::string_view name;
  unsigned event;
};
constexpr std::array kEvents{NamedEvent{"touchDown", UIControlEventTouchDown},
                             NamedEvent{"touchUpInside", UIControlEventTouchUpInside},
                             NamedEvent{"valueChanged", UIControlEventValueChanged}};

/// "setPlayerView:" for "playerView".
std::string setterFor(std::string property) {
  if (!property.empty())
    property.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(property.front())));
  return "set" + property + ":";
}

class Connector {
 public:
  explicit Connector(NibReading& reading) : reading_(reading) {}

  void outlet(const NibReading::Connections& from, const NibElement& connection) {
    const std::string property = connection.text("property");
    const auto value = destination(connection);
    if (!value) return;
    // A selector has an argument for each ":" in it, and a name from a file may have any number.
    const Method* setter = property.find(':') == std::string::npos
                               ? from.source->isa().find(Selector(setterFor(property)))
                               : nullptr;
    if (!setter || !setter->as<void, id>()) {
      reading_.report(from.source->className() + " has no outlet \"" + property + "\"");
      return;
    }
    (*setter->as<void, id>())(*from.source, value);
  }

  void action(const NibReading::Connections& from, const NibElement& connection) {
    const std::string name = connection.text("selector");
    const auto target = destination(connection);
    if (!target) return;
    const auto control = std::dynamic_pointer_cast<UIControl>(from.source);
    unsigned events = 0;
    for (const auto& known : kEvents) {
      if (known.name == connection.text("eventType")) events = known.event;
    }
    if (!control || !events) {
      reading_.report(from.source->className() + " sends no action at \"" + connection.text("eventType") +
                      "\"");
      return;
    }
    const Selector selector(name);
    const Method* method = selector.argumentCount() <= 1 ? target->isa().find(selector) : nullptr;
    const bool callable = method && (selector.argumentCount() == 1 ? method->as<void, id>() != nullptr
                                                                   : method->as<void>() != nullptr);
    if (!callable) {
      reading_.report(target->className() + " has no action \"" + name + "\"");
      return;
    }
    control->addTarget(target, selector, events);
  }

 private:
  id destination(const NibElement& connection) {
    const std::string identifier = connection.text("destination");
    const auto found = reading_.objects.find(identifier);
    if (found != reading_.objects.end() && found->second) return found->second;
    reading_.report(described(connection) + " leads to \"" + identifier + "\", which is not there");
    return nullptr;
  }

  NibReading& reading_;
};

}  // namespace

void connectNib(NibReading& reading) {
  Connector connector(reading);
  for (const auto& from : reading.connections) {
    for (const auto& connection : from.list->children) {
      if (connection.name == "outlet") {
        connector.outlet(from, connection);
      } else if (connection.name != "action") {
        reading.report(described(connection) + " is not a known connection");
      }
    }
  }
  for (const auto& from : reading.connections) {
    for (const auto& connection : from.list->children) {
      if (connection.name == "action") connector.action(from, connection);
    }
  }
}

}  // namespace ios
