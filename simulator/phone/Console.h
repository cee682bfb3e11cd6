#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/phone/BoundedLog.h"
#include "simulator/phone/TextPattern.h"

namespace simulator {

/// What applications write: standard output and standard error, each kept in a file as it comes and told line by line;
/// standard output is searched. An application that writes without end loses its oldest output, in the files and in
/// the search.
class Console {
 public:
  enum class Stream { output, errors };
  using LineSink = std::function<void(Stream stream, const std::string& line)>;
  /// Writes console.log and errors.log in `folder`. `lineSink` is called with each line once it is whole, or
  /// too long to wait for its end.
  Console(const std::filesystem::path& folder, LineSink lineSink);

  void append(Stream stream, std::string_view bytes);
  /// Begins the part that is searched; an unfinished line of the part before is ended in the
  /// search, not in the file.
  void beginSearchHere();
  /// Whether a line since then matches and was not taken before; takes it.
  bool take(const TextPattern& pattern);
  bool contains(const TextPattern& pattern) const;
  /// The last lines since then, for a message.
  std::vector<std::string> lastLines(std::size_t count) const;
  /// How many lines since then are no longer there to be searched.
  std::size_t dropped() const { return dropped_; }
  /// 0, or the errno that kept something from being written down.
  int problem() const { return outputLog_.problem() ? outputLog_.problem() : errorsLog_.problem(); }

 private:
  struct Line {
    std::string text;
    bool taken = false;
  };
  void endLine(Stream stream);

  BoundedLog outputLog_, errorsLog_;
  LineSink lineSink_;
  std::deque<Line> lines_;
  std::size_t lineBytes_ = 0, dropped_ = 0;
  std::string unfinishedOutput_, unfinishedErrors_;
};

}  // namespace simulator
