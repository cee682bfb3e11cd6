#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulator/live/Audience.h"
#include "simulator/live/CommandInbox.h"
#include "simulator/live/Display.h"
#include "simulator/live/Fingers.h"
#include "simulator/live/InboxWatch.h"
#include "simulator/live/Pace.h"
#include "simulator/live/PacedPhone.h"
#include "simulator/live/PasteboardWatch.h"
#include "simulator/live/PhotosWatch.h"
#include "simulator/live/ScreenMovie.h"
#include "simulator/live/TapRecorder.h"
#include "simulator/phone/Console.h"

namespace simulator {

/// The phone that people use: time goes on at the wall's pace, fingers and commands come from the inbox, and the
/// audience hears and sees what comes of them. Main thread.
class LivePhone {
 public:
  struct Options {
    Phone::Options phone;
    bool isNew = true;          // the device: it gets what there is to install
    std::filesystem::path out;  // for the console
    /// "/files/<key>/", where the audience finds the device's files.
    std::string filePrefix;
    std::filesystem::path flows;  // a folder of flows that can be played; may be empty
    /// What an application is started with from its icon before anybody said otherwise.
    std::map<std::string, std::map<std::string, std::string>> firstArguments;
  };
  LivePhone(Options options, CommandInbox& inbox, Display& display, Audience& audience);

  /// Installs what there is and tells the audience of the phone as it is. Empty, or what was wrong.
  std::string begin();
  /// Until it is switched off.
  void run();
  /// Switches the phone off. Also from a signal handler.
  void switchOff() noexcept;

 private:
  using Wall = std::chrono::steady_clock::time_point;
  struct CommandRow;
  static const std::map<std::string, CommandRow>& commandTable();

  // The loop (LivePhone.cpp).
  void takeItems();
  void takeTouches(LiveTouches touches);
  void takeDeparture(ViewerId viewer);
  void step(ios::Clock::Duration duration);
  void catchUp();
  ios::automation::Step::Answer stepOnce(ios::Clock::Duration duration);
  void show(const ios::automation::Step::Answer& seen);
  void settleTouches(bool visible);
  Wall nextWake() const;
  std::optional<ios::Clock::Instant> nextDue() const;
  bool attend(std::chrono::milliseconds waited);
  static Wall wallNow() { return std::chrono::steady_clock::now(); }
  static ios::Clock::Instant phoneNow() { return ios::Clock::shared().now(); }

  // What commands do (LivePhoneCommands.cpp). Each gives its answer, with "problem" if it was refused.
  using Members = ios::PropertyList;
  using Answer = ios::NSDictionary;
  void obey(LiveCommand command);
  Answer shake(const Members&);
  Answer home(const Members&);
  Answer back(const Members&);
  Answer rotate(const Members& members);
  Answer restart(const Members& members);
  Answer launch(const Members& members);
  Answer stop(const Members& members);
  Answer end(const Members& members);
  Answer install(const Members& members);
  Answer uninstall(const Members& members);
  Answer reset(const Members& members);
  Answer openLink(const Members& members);
  Answer permission(const Members& members);
  Answer microphone(const Members& members);
  Answer disk(const Members& members);
  Answer pause(const Members&);
  Answer resume(const Members&);
  Answer advance(const Members& members);
  Answer speed(const Members& members);
  Answer screenshot(const Members&);
  Answer tree(const Members&);
  Answer off(const Members&);

  // What programs do beside that (LivePhonePrograms.cpp).
  Answer gesture(const std::function<std::string()>& perform);
  ios::automation::Step::Answer pacedGesture(ios::Clock::Duration duration);
  Answer tap(const Members& members);
  Answer swipe(const Members& members);
  Answer elements(const Members&);
  Answer picture(const Members& members);
  Answer copyText(const Members& members);
  Answer pasteText(const Members&);
  Answer recordMovie(const Members& members);
  Answer addMovie(const Members& members);
  Answer contentSize(const Members& members);
  Answer statusBar(const Members& members);
  void abandon(ViewerId viewer);

  // Flows (LivePhoneFlows.cpp).
  struct Playback {
    std::string name, text;
    std::filesystem::path file;
    std::int64_t number = 0;  // of all that were played
    ViewerId viewer = 0;      // who wanted it
    bool fromProgram = false;
    std::filesystem::path out;  // for pictures
    std::map<std::string, std::string> variables;
    std::string lineFile, step;
    int line = 0, done = 0;
  };
  Answer flows(const Members&);
  Answer playFlow(const Members& members);
  static std::string readProgramsFlow(const Members& members, Playback& wanted);
  Answer stopFlow(const Members&);
  Answer recordFlow(const Members& members);
  Answer checkpoint(const Members& members);
  void playWantedFlow();
  ios::automation::Step::Answer pacedStep(ios::Clock::Duration duration,
                                          const std::vector<ios::TouchSample>& touches);
  void record(const std::string& step);
  void recordPermissions(const std::string& identifier);
  std::string launchStep(const std::string& identifier) const;
  void tellFlow();

  // What the audience is told (LivePhoneTopics.cpp).
  void tell(const std::string& topic, ios::NSDictionary value, bool onDemand = false);
  void tellHello();
  void tellPhone();
  void tellTime();
  void tellApplications();
  void tellConsole();
  void tellElements();
  bool isWatched(const std::string& topic) const;
  void tellChanges();
  void remark(const std::string& level, const std::string& text);
  void consoleLine(const std::string& from, const std::string& text);

  Options options_;
  CommandInbox& inbox_;
  Display& display_;
  Audience& audience_;
  Console console_;
  PacedPhone phone_;
  Pace pace_;
  Fingers fingers_;

  std::deque<LiveItem> deferred_;  // came while the application was waited for
  std::vector<ios::TouchSample> touches_;
  std::map<ViewerId, std::uint32_t> touchNumbers_;
  std::map<ViewerId, std::set<std::string>> watched_;
  std::optional<ios::Clock::Instant> nextEvent_;
  Wall lastStep_{};
  bool onlyMoves_ = true;  // of the touches that wait, none is more than a finger that moved
  std::atomic<bool> ended_ = false;

  std::string running_;  // what was told last
  bool responding_ = true;
  bool endWanted_ = false;  // of the application that is waited for
  std::map<std::string, std::map<std::string, std::string>> arguments_;
  std::string disk_ = "normal";
  std::string microphone_ = "silence", microphoneInUse_ = "silence";
  std::map<std::string, std::string> told_;  // by topic
  std::vector<std::string> consoleLines_;
  std::int64_t consoleCount_ = 0;
  PasteboardWatch pasteboard_;
  PhotosWatch photos_;
  InboxWatch reports_;
  TapRecorder recorder_;
  std::string launchedByTap_;  // by the step that is under way
  ViewerId asker_ = 0;         // of the command that is being obeyed
  bool askedByProgram_ = false;
  std::unique_ptr<ScreenMovie> movie_;  // of the screen, for a program
  ViewerId movieViewer_ = 0;
  ViewerId recordingViewer_ = 0;  // the program for which a flow is recorded; 0 for people
  ViewerId gestureViewer_ = 0;    // whose gesture is under way
  bool gestureStops_ = false;
  std::optional<Playback> playback_;  // a flow that is playing, or is about to
  bool flowStops_ = false;
  ios::NSDictionary lastFlow_;
  std::int64_t flowsPlayed_ = 0;
  Wall lastLook_{}, lastSurvey_{};
  bool lookDue_ = true, surveyDue_ = true;
};

}  // namespace simulator
