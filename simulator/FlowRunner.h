#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "simulator/Console.h"
#include "simulator/Flow.h"
#include "simulator/Phone.h"
#include "simulator/Transcript.h"

namespace simulator {

/// Plays the commands of a flow on a phone, in order, until one fails.
class FlowRunner {
 public:
  /// Pictures go below `out`.
  FlowRunner(Phone& phone, Console& console, Transcript& transcript, std::filesystem::path out)
      : phone_(phone), console_(console), transcript_(transcript), out_(std::move(out)) {}

  /// True when every step was seen to happen. Otherwise `problem` says where it ended, what was expected and
  /// what was there instead: "tour.yaml:12: tapOn: expected …".
  bool play(const std::vector<Command>& commands, std::string& problem);

 private:
  using Problem = std::string;  // empty: none
  Problem perform(const Action& action);
  Problem perform(const LaunchApp& command);
  Problem perform(const StopApp& command);
  Problem perform(const TapOn& command);
  Problem perform(const Swipe& command);
  Problem perform(const PressKey& command);
  Problem perform(const Shake& command);
  Problem perform(const AssertVisible& command);
  Problem perform(const Wait& command);
  Problem perform(const TakeScreenshot& command);
  Problem perform(const SetPermissions& command);
  Problem perform(const SetOrientation& command);
  Problem perform(const OpenLink& command);
  Problem perform(const InstallApp& command);
  Problem perform(const UninstallApp& command);
  Problem perform(const AssertLog& command);
  Problem perform(const AssertPasteboard& command);
  Problem perform(const AssertMovies& command);
  bool playGroup(const Command& command, const std::vector<Command>& commands, int times,
                 std::string& problem);

  /// The element that a tap on this text means: the text itself before a pattern, what can be tapped before
  /// what is only to be read, what is in front before what is behind. The answer is empty if there is none on
  /// the screen.
  static std::optional<ios::VisibleElement> choose(const std::vector<ios::VisibleElement>& elements,
                                                   const TextPattern& text);
  /// Waits, frame by frame, for such an element to be there or to be gone.
  std::optional<ios::VisibleElement> await(const TextPattern& text, bool visible, int timeout, bool& met);
  std::string onTheScreen();

  Phone& phone_;
  Console& console_;
  Transcript& transcript_;
  std::filesystem::path out_;
};

}  // namespace simulator
