#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace ios {

/// A movie's sound on the machine's sound output, from its beginning to the end of this object or of the
/// sound. In real time only, on a queue of its own.
class PlayedSound {
 public:
  /// Null when the machine has no sound output. `find` names the movie's file and is called on the queue; a movie
  /// without sound, or with sound that cannot be read, is silent.
  static std::unique_ptr<PlayedSound> start(std::function<std::optional<std::filesystem::path>()> find,
                                            double fromSeconds);
  ~PlayedSound();

 private:
  class Output;
  explicit PlayedSound(std::shared_ptr<Output> output);
  std::shared_ptr<Output> output_;
};

}  // namespace ios
