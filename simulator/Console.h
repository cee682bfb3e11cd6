#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Flow.h"

namespace simulator {

/// What applications write to standard output: kept in a file as it comes, told line by line, and searched.
class Console {
 public:
  using LineSink = std::function<void(const std::string& line)>;
  /// `lineSink` is called with each line once it is whole.
  Console(const std::filesystem::path& file, LineSink lineSink);

  void append(std::string_view bytes);
  /// Begins the part that is searched; an unfinished line of the part before is ended in the search, not in
  /// the file.
  void beginSearchHere();
  /// Whether a line since then matches and was not taken before; takes it.
  bool take(const TextPattern& pattern);
  bool contains(const TextPattern& pattern) const;
  /// The last lines since then, for a message.
  std::vector<std::string> lastLines(std::size_t count) const;
  /// Whether everything could be written down.
  bool isKept() const { return file_.good(); }

 private:
  struct Line {
    std::string text;
    bool taken = false;
  };
  void endLine();

  std::ofstream file_;
  LineSink lineSink_;
  std::vector<Line> lines_;
  std::string unfinished_;
};

}  // namespace simulator
