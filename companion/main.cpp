#include <strings.h>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSURL.h"
#include "Foundation/Print.h"
#include "Handoff.h"
#include "Inbox.h"
#include "Photos/MovieFile.h"
#include "Text.h"

namespace companion {
namespace {

enum ExitStatus { kFiled = 0, kRefused = 1, kNotKept = 2 };

void complain(const std::string& line) {
  std::fputs(("Tellvane: " + line + "\n").c_str(), stderr);
}
void say(const std::string& line) {
  ios::print("Tellvane: " + line + "\n");
}

bool isOurs(const std::string& text, const std::string& identifier) {
  const auto url = ios::NSURL::URLWithString(text);
  return url && strcasecmp(url->scheme().c_str(), "Tellvane") == 0 &&
         strcasecmp(url->host().c_str(), identifier.c_str()) == 0;
}

int fileReport(Inbox& inbox, const Report& report) {
  const auto received = std::chrono::floor<std::chrono::seconds>(ios::Clock::shared().wallTime());
  const auto result = inbox.file(report, received);
  if (const auto* failure = std::get_if<FileError>(&result)) {
    complain("the report could not be kept: " + failure->description());
    return kNotKept;
  }
  const auto& filed = std::get<Inbox::Filed>(result);
  if (filed.indexProblem) complain("the index is out of date: " + filed.indexProblem->description());
  say((filed.already ? "already filed as " : "filed ") + filed.name.text());
  if (report.kind == ReportKind::recording && !filed.hasMovie)
    say("the movie is not in the photo library; the report is without it");
  return kFiled;
}

int run() {
  ios::Device& device = ios::Device::current();
  const char* url = std::getenv("IOS_OPEN_URL");
  // The host clears the pasteboard soon, so it is read before anything else is done.
  Handoff handoff = url ? readHandoff(device.pasteboardFile()) : Refusal{"opened without a hand-off"};

  Inbox inbox(device.home());
  if (const auto failure = inbox.tend())
    complain("the inbox could not be put in order: " + failure->description());
  if (url && !isOurs(url, device.bundleIdentifier())) {
    complain("refused: " + inQuotes(url) + " is not this application's URL");
    return kRefused;
  }
  if (const auto* refusal = std::get_if<Refusal>(&handoff)) {
    complain("refused: " + refusal->reason);
    return kRefused;
  }
  auto& report = std::get<Report>(handoff);
  if (report.kind == ReportKind::recording)
    report.movie = ios::movieFileOfAsset(device.root(), entry(report.record, "videoInPhotosAlbum"));
  return fileReport(inbox, report);
}

}  // namespace
}  // namespace companion

int main() {
  try {
    return companion::run();
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "Tellvane: stopped: %s\n", problem.what());
    return companion::kNotKept;
  }
}
