#pragma once

#include <functional>
#include <optional>

#include "Base/FileDescriptor.h"
#include "CoreFoundation/PropertyList.h"

namespace ios {

/// One end of the stream between a driver and the application it steers. Messages are property-list
/// dictionaries, each sent as its length in four bytes (most significant first) and then a binary property
/// list. The driver sends a request, the application answers; neither sends out of turn. Used by one
/// thread at a time.
class ControlChannel {
 public:
  /// Takes over a connected stream socket; processes launched from here do not inherit it.
  explicit ControlChannel(FileDescriptor stream);

  int descriptor() const { return stream_.number(); }
  /// False when the other end has gone.
  [[nodiscard]] bool send(const NSDictionary& message);
  /// Called before each read. Returns true once there is something to read or the stream has ended,
  /// false to give up.
  using Wait = std::function<bool()>;
  /// Waits for the next message, without limit unless `wait` has one. Empty when the other end has gone or
  /// sends something that is not a message, or when `wait` gives up.
  std::optional<NSDictionary> receive(const Wait& wait = nullptr);

 private:
  FileDescriptor stream_;
};

}  // namespace ios
