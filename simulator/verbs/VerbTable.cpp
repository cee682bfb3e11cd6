#include <map>

#include "simulator/verbs/Verb.h"

namespace simulator {
namespace {

struct Family {
  const char* summary;
  bool hasDevice = true;
};

const std::map<std::string, Family> kFamilies = {
    {"flow", {"Plays flows, or writes down what is done by hand as one.", false}},
    {"io", {"Pictures and movies of the screen."}},
    {"log", {"What applications print."}},
    {"privacy", {"Answers to the system's questions, given beforehand."}},
    {"status_bar", {"What the status bar shows."}},
    {"time", {"The phone's own time."}},
    {"ui", {"What a hand does, and what an eye sees."}},
};

}  // namespace

std::string VerbKind::family() const {
  const std::string all = name;
  const std::size_t space = all.find(' ');
  return space == std::string::npos ? "" : all.substr(0, space);
}

std::string VerbKind::word() const {
  const std::string all = name;
  return all.substr(all.find(' ') + 1);
}

const std::vector<VerbChapter>& verbTable() {
  static const auto& table = *new std::vector<VerbChapter>{
      {"Devices", deviceVerbs()},
      {"The phone", phoneVerbs()},
      {"Applications", applicationVerbs()},
      {"Contents and settings", contentVerbs()},
      {"Pictures", pictureVerbs()},
      {"Hands and eyes", touchVerbs()},
      {"Time", timeVerbs()},
      {"Flows", flowVerbs()},
      {"Help", helpVerbs()},
      {"What this phone does not have", missingVerbs()},
  };
  return table;
}

std::string familySummary(const std::string& family) {
  return kFamilies.at(family).summary;
}

bool familyHasDevice(const std::string& family) {
  return kFamilies.at(family).hasDevice;
}

}  // namespace simulator
