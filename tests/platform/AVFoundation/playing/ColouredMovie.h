#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "ObjectiveC/NSObject.h"
#include "support/MovieProbe.h"

namespace testing_support {

/// How much encoding may change a colour.
inline constexpr int kLoss = 6;

/// The colour of the coloured movie at a time: it has 30 pictures a second, and another colour every quarter of
/// a second.
Colour colourAt(double seconds);

/// A movie of plain colours at 30 pictures a second, "movie.mov" in `folder`.
std::filesystem::path colouredMovie(const std::filesystem::path& folder, double seconds,
                                    std::size_t width = 96, std::size_t height = 64);

/// What ffmpeg makes of `movie` with `arguments` after it, in a file beside it.
std::filesystem::path rewritten(const std::filesystem::path& movie, const std::string& arguments);

/// `movie`, its index in front, cut off where so much of its picture at `seconds` has come.
std::filesystem::path brokenOff(const std::filesystem::path& movie, double seconds, double share);

/// Counts how often any player has played to the end.
class Ends : public ios::Subclass<Ends, ios::NSObject> {
 public:
  static ios::MethodList methods() { return {{"ended", &Ends::ended}}; }
  static std::shared_ptr<Ends> counted();
  int count = 0;

 private:
  void ended() { ++count; }
};

}  // namespace testing_support
