#include "InboxPage.h"

#include "Html.h"

namespace companion {
namespace {

std::string thumbnail(const InboxEntry& entry) {
  if (entry.hasImage) {
    return "<span class=\"thumb\"><img src=\"" + entry.name.text() +
           "/image.jpg\" alt=\"\" loading=\"lazy\"></span>";
  }
  if (entry.hasMovie) {
    return "<span class=\"thumb\"><video src=\"" + entry.name.text() +
           "/movie.mov#t=0.001\" preload=\"metadata\" muted aria-label=\"Screen recording\"></video><span "
           "class=\"glyph\">▶</span></span>";
  }
  const bool recording = entry.record && entry.record->contains("videoName");
  return std::string("<span class=\"thumb missing\"><span class=\"glyph\">") + (recording ? "▶" : "∅") +
         "</span></span>";
}

std::string card(const InboxEntry& entry) {
  std::string text;
  if (entry.record) {
    const Record& record = *entry.record;
    const std::string& screenName = screen(record);
    text = "<strong>" + (screenName.empty() ? "Unnamed screen" : shown(screenName)) + "</strong><span>" +
           shown(companion::entry(record, "appName")) + " " + shown(companion::entry(record, "appVersion")) +
           "</span><span>" + shown(companion::entry(record, "deviceModel")) + "</span>";
  } else {
    text = "<strong>" + entry.name.text() + "</strong><span class=\"none\">The record cannot be read.</span>";
  }
  return "<li><a class=\"card\" href=\"" + entry.name.text() + "/index.html\">" + thumbnail(entry) +
         "<span class=\"words\">" + text + "<time datetime=\"" + entry.name.timestamp() + "\">" +
         entry.name.time() + "</time></span></a></li>\n";
}

}  // namespace

std::string inboxPage(const std::vector<InboxEntry>& entries) {
  const std::string count =
      entries.empty() ? "No reports yet"
                      : std::to_string(entries.size()) + (entries.size() == 1 ? " report" : " reports");
  std::string body =
      "<main class=\"inbox\">\n<p class=\"eyebrow\">Tellvane</p>\n<h1>Inbox</h1>\n<p class=\"lead\">" +
      count + "</p>\n";
  std::string day;
  for (const InboxEntry& entry : entries) {
    if (entry.name.date() != day) {
      if (!day.empty()) body += "</ul>\n</section>\n";
      day = entry.name.date();
      body += "<section>\n<h2>" + day + "</h2>\n<ul class=\"cards\">\n";
    }
    body += card(entry);
  }
  if (!day.empty()) body += "</ul>\n</section>\n";
  return page("Tellvane – Inbox", body + "</main>\n");
}

}  // namespace companion
