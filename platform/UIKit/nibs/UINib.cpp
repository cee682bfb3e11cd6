#include "UIKit/UINib.h"

#include "Device/Device.h"
#include "Device/Files.h"
#include "Dispatch/Queue.h"
#include "UIKit/Private/Chrome.h"
#include "UIKit/Private/NibConnections.h"
#include "UIKit/UIImage.h"

namespace ios {
namespace {

constexpr char kOwner[] = "IBFilesOwner";
// Keeps a document with many mistakes from filling the log.
constexpr std::size_t kMostLines = 20;

/// Lines about one document, each with its name.
class Report {
 public:
  explicit Report(std::string name) : name_(std::move(name)) {}
  ~Report() {
    if (lines_ > kMostLines) deviceLog(name_ + ": and " + std::to_string(lines_ - kMostLines) + " more");
  }
  Report(const Report&) = delete;
  void add(const std::string& problem) {
    if (++lines_ <= kMostLines) deviceLog(name_ + ": " + problem);
  }

 private:
  std::string name_;
  std::size_t lines_ = 0;
};

std::optional<NibElement> readFileOfNib(const std::filesystem::path& file, Report& report) {
  FileError error;
  const auto bytes = readFile(file, &error, kLargestNib);
  if (!bytes) {
    report.add(error.description());
    return std::nullopt;
  }
  std::string problem;
  auto document = readNibDocument(*bytes, problem);
  if (!document) report.add(problem);
  return document;
}

}  // namespace

UINib::UINib(std::string name, std::shared_ptr<NSBundle> bundle)
    : name_(std::move(name)), bundle_(bundle ? std::move(bundle) : NSBundle::mainBundle()) {}

std::shared_ptr<UINib> UINib::nibWithNibName(std::string name, std::shared_ptr<NSBundle> bundle) {
  return std::make_shared<UINib>(std::move(name), std::move(bundle));
}

std::vector<id> UINib::instantiateWithOwner(const id& owner) const {
  assertMainThread("UINib instantiateWithOwner");
  Report report("the interface file " + name_ + ".xib");
  const auto file = bundle_->pathForResource(name_, "xib");
  if (!file) {
    report.add("is not in the bundle \"" + bundle_->bundlePath().string() + "\"");
    return {};
  }
  const auto document = readFileOfNib(*file, report);
  if (!document) return {};

  // A document of a language's own folder has its texts in it, and is laid out for it.
  const auto folder = file->parent_path().filename();
  const bool base = folder == "Base.lproj";
  NibReading reading;
  reading.mirrored = (base || folder.extension() != ".lproj") && chrome::isMirrored();
  reading.report = [&](const std::string& problem) { report.add(problem); };
  reading.localized = [&](const std::string& key, const std::string& text) {
    if (!base) return text;
    const std::string found = bundle_->localizedStringForKey(key, text, name_);
    return text.empty() && found == key ? text : found;
  };
  reading.image = [&](const std::string& name) -> std::shared_ptr<UIImage> {
    const bool typed = name.find('.') != std::string::npos;
    const auto path = bundle_->pathForResource(name, typed ? "" : "png");
    auto image = path ? UIImage::imageWithContentsOfFile(*path) : nullptr;
    if (!image) report.add("there is no image \"" + name + "\"");
    return image;
  };

  std::vector<id> topLevel;
  for (const auto& element : document->child("objects")->children) {
    if (element.name != "placeholder") {
      if (auto view = makeNibView(element, reading)) topLevel.push_back(std::move(view));
      continue;
    }
    if (!owner || element.text("placeholderIdentifier") != kOwner) continue;
    reading.objects.emplace(element.text("id"), owner);
    if (const NibElement* list = element.child("connections")) reading.connections.push_back({owner, list});
  }
  connectNib(reading);
  return topLevel;
}

}  // namespace ios
