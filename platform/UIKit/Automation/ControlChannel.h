#pragma once

#include <optional>

#include "CoreFoundation/PropertyList.h"

namespace ios {

/// One end of the stream between a driver and the application it steers. What travels are property-list
/// dictionaries, each as its length in four bytes (most significant first) and then a binary property list.
/// The driver asks, the application answers; neither speaks out of turn. Used by one thread at a time.
class ControlChannel {
 public:
  /// Takes over a connected stream socket; processes launched from here do not inherit it.
  explicit ControlChannel(int descriptor);
  ~ControlChannel();
  ControlChannel(const ControlChannel&) = delete;
  ControlChannel& operator=(const ControlChannel&) = delete;

  int descriptor() const { return descriptor_; }
  /// False when the other end has gone.
  [[nodiscard]] bool send(const NSDictionary& message);
  /// Waits for the next message. Empty when the other end has gone, or sends what is no message.
  std::optional<NSDictionary> receive();

 private:
  int descriptor_;
};

}  // namespace ios
