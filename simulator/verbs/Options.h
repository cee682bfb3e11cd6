#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace simulator {

/// How a phone is set up when it is new.
struct SettingChoices {
  std::string profile = "iPhone 6", language = "en-US", textSize = "L";
};
void declare(CLI::App& app, SettingChoices& choices);

/// How a phone runs that is switched on.
struct RunChoices {
  std::uint16_t port = 0;
  std::string listen = "127.0.0.1";
  bool realTime = false;
  std::vector<std::filesystem::path> applications;
  std::filesystem::path flows;
};
void declare(CLI::App& app, RunChoices& choices);

/// `phone`: a phone in a browser, which is new and goes again.
struct PhoneChoices {
  SettingChoices settings;
  RunChoices run;
  bool open = false, noOpen = false;
  std::filesystem::path out;
  // From `boot`: the device of the user's to run, and where to say that it runs.
  std::string device;
  int ready = -1;
};
void declare(CLI::App& app, PhoneChoices& choices);

/// `flow`: flows on phones of their own, in virtual time, or on one that is switched on.
struct FlowChoices {
  std::string flow;  // a file, "-" or a folder; empty: the tour
  std::filesystem::path out;
  SettingChoices settings;
  std::vector<std::string> variables;  // "NAME=VALUE", which the flow's expressions can name
  bool realTime = false;
  std::vector<std::filesystem::path> applications;  // folders of bundles
  double timeLimit = 120;                           // seconds that an application may take to answer
  std::string device;                               // a phone that is switched on; empty: a new one
  bool isVirtual = false;                           // on a new phone, which goes without saying
  std::uint64_t seed = 0;                           // 0: orderings are as they are registered
  int jobs = 1;
  std::string shard;  // "2/3"
  std::filesystem::path junit, durations;
};
void declare(CLI::App& app, FlowChoices& choices);

/// `flow check`: flows are read only.
struct CheckChoices {
  std::vector<std::filesystem::path> flows;  // files and folders
  std::vector<std::string> variables;        // as above
  bool portable = false;                     // and asked for what no other tool takes
};
void declare(CLI::App& app, CheckChoices& choices);

/// "NAME=VALUE", taken apart.
std::map<std::string, std::string> assignments(const std::vector<std::string>& variables);

}  // namespace simulator
