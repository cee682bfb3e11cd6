#include <algorithm>
#include <fstream>

#include "simulator/flow/Flow.h"
#include "simulator/flow/FlowRunner.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Transcript.h"
#include "simulator/live/FlowMovie.h"
#include "simulator/live/LivePhone.h"
#include "simulator/live/Words.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using ios::Clock;
using ios::NSArray;
using ios::NSDictionary;

constexpr Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);
constexpr std::size_t kLongestFlow = 64 << 10;

/// Thrown through the runner of a flow that somebody stops.
struct FlowStopped {};

NSDictionary problem(const std::string& text) {
  return {{"problem", text}};
}

std::string contents(const fs::path& file) {
  const auto bytes = ios::readFile(file, nullptr, kLongestFlow);
  return bytes ? std::string(bytes->begin(), bytes->end()) : "";
}

/// The first comment's first line, or the name.
std::string titleOf(const std::string& text, const std::string& name) {
  if (!text.starts_with("# ")) return name;
  return text.substr(2, text.find('\n') - 2);
}

}  // namespace

LivePhone::Answer LivePhone::flows(const Members&) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(options_.flows, error)) {
    if (entry.path().extension() == ".yaml") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  NSArray list;
  for (const std::string& name : names) {
    list.push_back(
        NSDictionary{{"name", name}, {"title", titleOf(contents(options_.flows / (name + ".yaml")), name)}});
  }
  return {{"flows", std::move(list)}};
}

LivePhone::Answer LivePhone::playFlow(const Members& members) {
  const std::string* name = members.text("name");
  const std::string* text = members.text("text");
  const std::string* path = askedByProgram_ ? members.text("file") : nullptr;
  if ((name ? 1 : 0) + (text ? 1 : 0) + (path ? 1 : 0) != 1) return problem("expected a name or a text");
  if (recorder_.isRecording()) return problem("a flow is being recorded");
  Playback wanted;
  wanted.out = options_.out;
  if (path) {
    if (std::string why = readProgramsFlow(members, wanted); !why.empty()) return problem(why);
  } else if (text) {
    if (text->size() > kLongestFlow) return problem("the flow is too long");
    wanted.name = "flow";
    wanted.file = options_.out / "flow.yaml";
    wanted.text = *text;
    std::ofstream file(wanted.file, std::ios::binary | std::ios::trunc);
    if (!(file << *text).flush()) return problem("the flow could not be written down");
  } else {
    if (name->find('/') != std::string::npos) return problem("expected the name of a flow");
    wanted.name = *name;
    wanted.file = options_.flows / (*name + ".yaml");
    wanted.text = contents(wanted.file);
  }
  std::string why;
  if (!readFlow(wanted.file, why, wanted.variables)) return problem(why);
  wanted.number = ++flowsPlayed_;
  wanted.viewer = asker_;
  wanted.fromProgram = askedByProgram_;
  playback_ = std::move(wanted);
  flowStops_ = false;
  tellFlow();
  return {{"number", playback_->number}};
}

/// What a program's flow is: a file, values for its expressions, a folder for its pictures. Empty, or what is wrong.
std::string LivePhone::readProgramsFlow(const Members& members, Playback& wanted) {
  wanted.file = *members.text("file");
  wanted.name = wanted.file.stem();
  wanted.text = contents(wanted.file);
  if (const std::string* out = members.text("out")) {
    wanted.out = *out;
    if (const auto refused = ios::createFolder(wanted.out)) return refused->description();
  }
  const auto* variables = members.member("variables");
  if (!variables) return {};
  if (!variables->dictionary()) return "expected variables by name";
  for (const auto& [name, value] : *variables->dictionary()) {
    if (!value.text()) return "the variable \"" + name + "\" is no text";
    wanted.variables[name] = *value.text();
  }
  return {};
}

LivePhone::Answer LivePhone::stopFlow(const Members&) {
  if (!playback_) return problem("no flow is playing");
  flowStops_ = true;
  return {};
}

void LivePhone::playWantedFlow() {
  std::string why;
  const auto flow = readFlow(playback_->file, why, playback_->variables);
  if (flow) {
    const auto lifted = fingers_.allLifted();
    touches_.insert(touches_.end(), lifted.begin(), lifted.end());
    stepOnce(Clock::Duration::zero());
    phone_.setPacer([this](Clock::Duration duration, const std::vector<ios::TouchSample>& touches) {
      return pacedStep(duration, touches);
    });
    Transcript transcript;
    const auto keepFile = [this](const std::string& name, const ios::Bytes& contents) -> Problem {
      const auto error = ios::writeFileAtomically(playback_->out / name, contents);
      return error ? error->description() : "";
    };
    FlowMovie movie(phone_, keepFile);
    Stage stage(phone_, console_, keepFile);
    stage.setRecorder(&movie);
    stage.setExact(flow->recordedAt.has_value());
    FlowRunner runner(stage, transcript);
    runner.setWatcher([this](const Step& step, const std::string& description) {
      playback_->line = step.line;
      playback_->lineFile = fs::path(step.file).filename().string();
      playback_->step = description;
      ++playback_->done;
      tellFlow();
      pacedStep(Clock::Duration::zero(), {});
    });
    try {
      if (runner.play(*flow, why)) why.clear();
    } catch (const FlowStopped&) {
      why = "stopped";
    }
    if (movie.isRecording()) movie.end();
    phone_.setPacer({});
  }
  lastFlow_ = NSDictionary{
      {"name", playback_->name}, {"number", playback_->number}, {"problem", why}, {"line", playback_->line}};
  playback_.reset();
  // Whatever the flow left behind is seen now.
  step(Clock::Duration::zero());
  tellFlow();
}

/// Lets time pass at the wall's pace, and the audience see it; commands that a playing flow allows come in between.
ios::automation::Step::Answer LivePhone::pacedStep(Clock::Duration duration,
                                                   const std::vector<ios::TouchSample>& touches) {
  const Clock::Instant end = phoneNow() + duration;
  touches_ = touches;
  ios::automation::Step::Answer seen;
  if (duration == Clock::Duration::zero()) seen = stepOnce(duration);
  while (phoneNow() < end) {
    takeItems();
    if (flowStops_ || ended_) throw FlowStopped{};
    const Clock::Duration due =
        options_.phone.realTime ? kFrame : pace_.due(wallNow(), phoneNow(), nextDue());
    const Clock::Instant next = std::min(end, phoneNow() + kFrame);
    if (options_.phone.realTime || phoneNow() + due >= next) {
      const auto changed = seen.changedWidth;
      seen = stepOnce(std::min(due, end - phoneNow()));
      seen.changedWidth = std::max(seen.changedWidth, changed);
    }
    tellChanges();
    if (phoneNow() >= end || options_.phone.realTime) continue;
    const auto wake = pace_.wallTimeOf(std::min(end, phoneNow() + kFrame));
    inbox_.waitUntil(wake ? *wake : wallNow() + std::chrono::hours(1));
  }
  if (flowStops_ || ended_) throw FlowStopped{};
  return seen;
}

LivePhone::Answer LivePhone::recordFlow(const Members& members) {
  const auto* on = members.member("on");
  if (!on || !on->boolean()) return problem("expected on to be true or false");
  const auto now = phoneNow().time_since_epoch();
  if (*on->boolean()) {
    if (recorder_.isRecording()) return problem("a flow is being recorded already");
    const std::string running = phone_.running();
    const std::string appId = running.empty() ? options_.firstArguments.begin()->first : running;
    const ios::DeviceSettings& settings = ios::Device::current().settings();
    recordingViewer_ = askedByProgram_ ? asker_ : 0;
    recorder_.begin(now, appId,
                    "Recorded on an " + ios::Device::current().profile().name + ", " +
                        settings.languages.front() + ", text size " +
                        std::string(ios::textSizeName(settings.textSize)));
    recordPermissions(appId);
    if (!running.empty()) record(launchStep(running));
    tellFlow();
    return {};
  }
  if (!recorder_.isRecording()) return problem("no flow is being recorded");
  const std::string text = recorder_.end(now);
  tellFlow();
  return {{"text", text}, {"name", "recorded.yaml"}, {"url", audience_.keepFile("recorded.yaml", text)}};
}

LivePhone::Answer LivePhone::checkpoint(const Members& members) {
  const std::string* text = members.text("text");
  if (!text) return problem("expected a text");
  if (!recorder_.isRecording()) return problem("no flow is being recorded");
  record("assertVisible: " + inYaml(*text));
  return {};
}

void LivePhone::recordPermissions(const std::string& identifier) {
  const auto& all = ios::Device::current().settings().permissions;
  const auto own = all.find(identifier);
  if (own == all.end() || own->second.empty()) return;
  std::string answers;
  for (const auto& [service, answer] : own->second)
    answers += (answers.empty() ? "" : ", ") + service + ": " + permissionWord(answer);
  record("setPermissions: {" + answers + "}");
}

/// As a flow starts it: with what it is given on this phone.
std::string LivePhone::launchStep(const std::string& identifier) const {
  std::string step = "launchApp:\n    appId: " + identifier;
  if (microphone_ != "silence") step += "\n    sound: " + inYaml(microphone_);
  const auto arguments = arguments_.find(identifier);
  if (arguments == arguments_.end() || arguments->second.empty()) return step;
  step += "\n    arguments:";
  for (const auto& [name, value] : arguments->second)
    step += "\n      " + inYaml(name) + ": " + inYaml(value);
  return step;
}

void LivePhone::record(const std::string& step) {
  if (!recorder_.isRecording()) return;
  recorder_.action(phoneNow().time_since_epoch(), step);
  tellFlow();
}

void LivePhone::tellFlow() {
  NSDictionary value{{"recording", recorder_.isRecording()}, {"text", recorder_.text()}};
  if (playback_) {
    value["playing"] =
        NSDictionary{{"name", playback_->name}, {"text", playback_->text}, {"file", playback_->lineFile},
                     {"line", playback_->line}, {"step", playback_->step}, {"done", playback_->done}};
  }
  if (!lastFlow_.empty()) value["last"] = lastFlow_;
  tell("flow", std::move(value));
}

}  // namespace simulator
