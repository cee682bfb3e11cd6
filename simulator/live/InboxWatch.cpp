#include "simulator/live/InboxWatch.h"

#include "Device/Device.h"
#include "companion/Inbox.h"
#include "simulator/screens/Screens.h"

namespace simulator {
namespace {

using ios::NSArray;
using ios::NSDictionary;

/// "Notes, ListViewController"; the folder's name when the record cannot be read.
std::string titleOf(const companion::InboxEntry& report) {
  if (!report.record) return report.name.text();
  std::string title;
  for (const char* key : {"appName", "screenName", "videoName"}) {
    const std::string text = companion::entry(*report.record, key);
    if (!text.empty()) title += (title.empty() ? "" : ", ") + text;
  }
  return title;
}

}  // namespace

std::optional<NSDictionary> InboxWatch::look() {
  const companion::Inbox inbox(ios::Device::current().homeOf(kCompanionIdentifier));
  if (!folder_.hasChanged(inbox.folder())) return std::nullopt;
  NSArray reports;
  const std::string base = filePrefix_ + "inbox/";
  for (const companion::InboxEntry& entry : inbox.reports()) {
    const std::string name = entry.name.text();
    const auto url = [&](const std::filesystem::path& file) {
      return base + file.lexically_relative(inbox.folder()).generic_string();
    };
    NSDictionary report{{"name", name},
                        {"url", base + name + "/index.html"},
                        {"title", titleOf(entry)},
                        {"received", entry.name.timestamp()}};
    if (entry.hasImage) report["image"] = url(inbox.imageOf(entry.name));
    if (entry.hasMovie) report["movie"] = url(inbox.movieOf(entry.name));
    reports.push_back(std::move(report));
  }
  return NSDictionary{{"index", base + "index.html"}, {"reports", std::move(reports)}};
}

}  // namespace simulator
