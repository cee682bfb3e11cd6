#include "ReportPage.h"

#include <string_view>

#include "Html.h"

namespace companion {
namespace {

struct Fact {
  std::string_view label;
  std::string_view key;
};

std::string row(std::string_view label, const std::string& markup) {
  return "<tr><th scope=\"row\">" + std::string(label) + "</th><td>" + markup + "</td></tr>\n";
}

std::string fact(const Record& record, const Fact& fact) {
  const std::string& text = entry(record, fact.key);
  return row(fact.label, text.empty() ? "<span class=\"none\">not given</span>" : shown(text));
}

std::string section(std::string_view heading, const std::string& rows) {
  return "<section>\n<h2>" + std::string(heading) + "</h2>\n<table>\n" + rows + "</table>\n</section>\n";
}

std::string facts(const Record& record, std::initializer_list<Fact> list) {
  std::string rows;
  for (const Fact& each : list) rows += fact(record, each);
  return rows;
}

std::string pixels(const ImageSize& size) {
  return std::to_string(size.width) + " × " + std::to_string(size.height) + " pixels";
}

std::string picture(const Report& report, bool hasMovie) {
  if (hasMovie) {
    return "<figure class=\"picture\"><video src=\"movie.mov#t=0.001\" controls aria-label=\"Screen "
           "recording\" "
           "preload=\"metadata\"></video></figure>\n";
  }
  if (!report.image) {
    const bool recording = report.kind == ReportKind::recording;
    return std::string("<figure class=\"picture\"><div class=\"missing\"><span class=\"glyph\">") +
           (recording ? "▶" : "∅") + "</span><p>" +
           (recording ? "The movie is not in the device’s photo library, so the report came without it."
                      : "No picture came with this report.") +
           "</p></div></figure>\n";
  }
  const ImageSize& size = *report.image;
  return "<figure class=\"picture\"><a href=\"image.jpg\"><img src=\"image.jpg\" width=\"" +
         std::to_string(size.width) + "\" height=\"" + std::to_string(size.height) +
         "\" alt=\"The screen as it was captured\"></a></figure>\n";
}

std::string lead(const Record& record) {
  const auto part = [&](std::string_view key, std::string_view otherwise) {
    const std::string& text = entry(record, key);
    return text.empty() ? std::string(otherwise) : shown(text);
  };
  return "<p class=\"lead\">" + part("appName", "An application") + " " + part("appVersion", "") + " on " +
         part("deviceModel", "a device") + ", " + part("oSFamily", "") + " " + part("oSVersion", "") +
         "</p>\n";
}

std::string filesSection(const std::vector<ReportFile>& files) {
  std::string rows;
  for (const auto& [path, bytes] : files) {
    rows += row("<a href=\"" + path + "\">" + path + "</a>", sizeText(bytes));
  }
  return section("Files", rows);
}

}  // namespace

std::string reportPage(const Report& report, const ReportName& name, const std::vector<ReportFile>& files,
                       bool hasMovie) {
  const Record& record = report.record;
  const bool recording = report.kind == ReportKind::recording;
  const bool wide = report.image && report.image->width > report.image->height;
  const std::string& screenName = screen(record);

  std::string body = "<header class=\"bar\"><nav><a href=\"../index.html\">‹ Inbox</a></nav><span>" +
                     name.text() + "</span></header>\n";
  body += std::string("<main class=\"report") + (wide ? " wide" : "") + "\">\n" + picture(report, hasMovie) +
          "<article>\n";
  body += std::string("<p class=\"eyebrow\">") + (recording ? "Screen recording" : "Still image") +
          "</p>\n<h1>" + (screenName.empty() ? "Unnamed screen" : shown(screenName)) + "</h1>\n" +
          lead(record);
  body += "<p class=\"when\"><time datetime=\"" + name.timestamp() + "\">" + name.date() + ", " +
          name.time() + "</time></p>\n";
  body += section("Application", facts(record, {{"Name", "appName"},
                                                {"Version", "appVersion"},
                                                {"Screen", recording ? "videoName" : "screenName"},
                                                {"Tellvane", "sdkId"}}));
  body += section("Device", facts(record, {{"Model", "deviceModel"},
                                           {"System", "oSFamily"},
                                           {"System version", "oSVersion"},
                                           {"Resolution", "deviceResolution"},
                                           {"Language", "language"}}));
  if (recording)
    body += section("Recording", facts(record, {{"In the photo library", "videoInPhotosAlbum"}}));
  if (report.image) {
    const auto bytes = report.representations.at(kImageType).size();
    body += section("Picture", row("Size", pixels(*report.image)) + row("JPEG", sizeText(bytes)));
  }
  body += filesSection(files) + "</article>\n</main>\n";
  return page((screenName.empty() ? "Unnamed screen" : screenName) + " – " + entry(record, "appName"), body);
}

}  // namespace companion
