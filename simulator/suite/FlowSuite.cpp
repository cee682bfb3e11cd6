#include "simulator/suite/FlowSuite.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "Base/Output.h"
#include "simulator/flow/Workspace.h"
#include "simulator/remote/Interruption.h"
#include "simulator/remote/Process.h"
#include "simulator/suite/Durations.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using Steady = std::chrono::steady_clock;

std::string contents(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::stringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::string lastLine(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text.substr(text.rfind('\n') + 1);
}

std::string inSeconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f s", seconds);
  return text;
}

/// What flows are called in the report and in the output folder: as their files, with the folder's name before it where
/// several are called alike.
std::map<fs::path, std::string> namesOf(const std::vector<fs::path>& flows) {
  std::map<std::string, int> alike;
  for (const fs::path& flow : flows) ++alike[flow.stem()];
  std::map<fs::path, std::string> names;
  for (const fs::path& flow : flows) {
    const std::string stem = flow.stem();
    names[flow] = alike[stem] == 1 ? stem : flow.parent_path().filename().string() + "-" + stem;
  }
  return names;
}

/// A flow that is playing.
struct Running {
  FlowSuite::Outcome outcome;
  Process process;
  Steady::time_point start;
  fs::path output;
};

class Round {
 public:
  Round(const FlowSuite& suite, const std::vector<fs::path>& flows)
      : suite_(suite), names_(namesOf(flows)), waiting_(flows) {
    std::reverse(waiting_.begin(), waiting_.end());
  }

  std::vector<FlowSuite::Outcome> play() {
    const auto& interruption = Interruption::ofProcess();
    bool told = false;
    while (!running_.empty() || (!waiting_.empty() && !interruption.isRaised())) {
      while (!waiting_.empty() && !interruption.isRaised() &&
             running_.size() < static_cast<std::size_t>(suite_.jobs))
        start();
      await(!told);
      if (interruption.isRaised() && !std::exchange(told, true)) {
        for (const Running& each : running_) each.process.signal(SIGINT);
      }
    }
    return std::move(done_);
  }

 private:
  void start() {
    const fs::path flow = waiting_.back();
    waiting_.pop_back();
    const std::string& name = names_.at(flow);
    std::vector<std::string> words = {suite_.program, flow.string(), "--out", (suite_.out / name).string()};
    words.insert(words.end(), suite_.options.begin(), suite_.options.end());
    const fs::path output = suite_.out / (name + ".txt");
    running_.push_back({{.name = name},
                        Process::start({.words = std::move(words), .output = output.string()}),
                        Steady::now(),
                        output});
  }

  /// Until one has ended or, once, somebody interrupts.
  void await(bool interruptible) {
    std::vector<pollfd> watched;
    for (const Running& each : running_) watched.push_back({each.process.handle(), POLLIN, 0});
    if (interruptible) watched.push_back({Interruption::ofProcess().descriptor(), POLLIN, 0});
    if (::poll(watched.data(), watched.size(), -1) < 0) return;
    for (std::size_t i = running_.size(); i-- > 0;) {
      if (watched[i].revents == 0) continue;
      finish(running_[i]);
      running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }

  void finish(Running& one) {
    FlowSuite::Outcome outcome = std::move(one.outcome);
    outcome.status = one.process.wait();
    outcome.seconds = std::chrono::duration<double>(Steady::now() - one.start).count();
    outcome.output = contents(one.output);
    if (outcome.status != 0) outcome.problem = lastLine(outcome.output);
    const std::string mark = outcome.status == 0 ? "ok    " : outcome.status == 130 ? "cut   " : "FAIL  ";
    ios::writeOutput(mark + outcome.name + " (" + inSeconds(outcome.seconds) + ")" +
                     (outcome.problem.empty() ? "" : ": " + outcome.problem) + "\n");
    done_.push_back(std::move(outcome));
  }

  const FlowSuite& suite_;
  const std::map<fs::path, std::string> names_;
  std::vector<fs::path> waiting_;
  std::vector<Running> running_;
  std::vector<FlowSuite::Outcome> done_;
};

void write(const fs::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (!(stream << text).flush()) throw Refusal(Exit::cannotCreate, "Could not write " + file.string() + ".");
}

}  // namespace

Exit FlowSuite::play(const std::vector<fs::path>& flows) const {
  std::error_code error;
  fs::create_directories(out, error);
  if (error) throw Refusal(Exit::cannotCreate, "Could not make " + out.string() + ": " + error.message());
  if (!junit.empty()) write(junit, junitReport({}));  // what cannot be written is known before
  auto outcomes = Round(*this, flows).play();
  std::sort(outcomes.begin(), outcomes.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  if (!junit.empty()) write(junit, junitReport(outcomes));
  if (!durations.empty()) {
    Durations known = Durations::read(durations);
    for (const Outcome& outcome : outcomes) {
      if (outcome.status == 0) known.set(outcome.name, outcome.seconds);
    }
    write(durations, known.text());
  }
  if (Interruption::ofProcess().isRaised()) throw Interrupted{};
  const auto failed =
      std::count_if(outcomes.begin(), outcomes.end(), [](const Outcome& each) { return each.status != 0; });
  ios::writeOutput(std::to_string(outcomes.size()) + " flows, " + std::to_string(failed) + " failed; see " +
                   out.string() + "\n");
  if (failed > 0 && seed != 0)
    ios::writeOutput("The orderings were those of --seed " + std::to_string(seed) + ".\n");
  return failed == 0 ? Exit::done : Exit::failed;
}

std::vector<fs::path> flowsAt(const fs::path& place) {
  std::error_code error;
  std::vector<fs::path> flows;
  if (!fs::is_directory(place, error)) {
    flows.push_back(place);
    return flows;
  }
  if (fs::exists(place / Workspace::kConfiguration, error)) {
    std::string problem;
    flows = Workspace::flows(place, problem);
    if (!problem.empty()) throw Refusal(Exit::refused, problem);
    if (flows.empty()) throw Refusal(Exit::noInput, "config.yaml chooses no flow in " + place.string() + ".");
    return flows;
  }
  for (const auto& entry : fs::directory_iterator(place, error)) {
    const fs::path name = entry.path().filename();
    if (name.extension() == ".yaml" && name.stem().extension() != ".part" && entry.is_regular_file(error))
      flows.push_back(entry.path());
  }
  std::sort(flows.begin(), flows.end());
  if (flows.empty()) throw Refusal(Exit::noInput, "There is no flow (*.yaml) in " + place.string() + ".");
  return flows;
}

}  // namespace simulator
