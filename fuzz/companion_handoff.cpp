// Any content of the pasteboard is either refused with one printable line, or becomes a valid report whose
// files match what was handed over.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

#include "Require.h"
#include "companion/Handoff.h"
#include "companion/InboxPage.h"
#include "companion/RecordJson.h"
#include "companion/ReportPage.h"
#include "companion/Text.h"

namespace {

using namespace companion;

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool showsEverything(std::string_view text) {
  while (!text.empty()) {
    const bool lineEnd = text.front() == '\n';
    const auto codePoint = takeCodePoint(text);
    if (!codePoint || (isInvisible(*codePoint) && !lineEnd)) return false;
  }
  return true;
}

void checkPage(const std::string& page) {
  require(showsEverything(page), "a page hides something");
  require(page.find("<script") == std::string::npos, "a page runs a script");
  require(page.ends_with("</body>\n</html>\n"), "a page is cut off");
}

void checkReport(const Report& report) {
  const auto keys = recordKeys(report.kind);
  require(report.record.size() == keys.size(), "the record has other entries");
  for (const std::string_view key : keys) {
    const auto found = report.record.find(std::string(key));
    require(found != report.record.end(), "the record lacks an entry");
    require(found->second.size() <= 4096 && isUTF8(found->second), "a text is out of bounds");
  }
  require(entry(report.record, "oSFamily") == "iOS", "another system");
  require(report.changeCount >= 0, "a count below zero");
  const bool recording = report.kind == ReportKind::recording;
  require(report.representations.contains(recording ? kVideoRecordType : kImageRecordType), "no archive");
  require(report.representations.contains(kImageType) == report.image.has_value(), "an image out of nowhere");
  require(report.representations.size() == (report.image ? 2 : 1), "a foreign type");

  const ReportName name{std::chrono::sys_seconds(std::chrono::seconds(1767606067)), 1};
  const std::string json = recordJson(report);
  require(showsEverything(json), "record.json hides something");
  require(readRecordJson(bytesOf(json)) == report.record, "record.json says something else");
  require(readChangeCount(bytesOf(receivedJson(report, name))) == report.changeCount, "another count");
  for (const bool hasMovie : {false, true}) {
    checkPage(reportPage(report, name, {{"record.json", json.size()}}, hasMovie));
    checkPage(inboxPage({{name, report.record, report.image.has_value(), hasMovie}}));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Handoff handoff = checkHandoff({data, size});
  if (const auto* refusal = std::get_if<Refusal>(&handoff)) {
    require(!refusal->reason.empty() && refusal->reason.find('\n') == std::string::npos &&
                showsEverything(refusal->reason) && refusal->reason.size() < 2000,
            "a refusal is not one printable line");
  } else {
    checkReport(std::get<Report>(handoff));
  }
  return 0;
}
