#pragma once

#include <sys/resource.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "companion/Report.h"
#include "support/ScratchFolder.h"

namespace companion_tests {

using testing_support::ScratchFolder;

/// All that is below a folder: path → bytes of a file, "→ target" of a link, "folder", or "other".
using Snapshot = std::map<std::string, std::string>;
Snapshot snapshot(const std::filesystem::path& folder);

void write(const std::filesystem::path& file, const ios::Bytes& bytes);
ios::Bytes read(const std::filesystem::path& file);
ios::Bytes bytesOf(const std::string& text);

struct Ended {
  int status = -1;  // exit status, or 128 + the signal
  std::string out, err;
};
/// Runs a program to its end in this process's environment and `variables`.
struct Program {
  std::vector<std::string> arguments;
  std::map<std::string, std::string> variables;
  /// The longest file it may write.
  std::optional<rlim_t> longestFile;
};
Ended run(const Program& program);

/// A device folder whose pasteboard a test fills, and the companion's executable run on it.
class CompanionPhone {
 public:
  std::filesystem::path root() const { return folder_.path() / "device"; }
  std::filesystem::path pasteboard() const { return root() / "Pasteboard" / "general.plist"; }
  std::filesystem::path home() const { return root() / "Containers" / COMPANION_IDENTIFIER; }
  std::filesystem::path inbox() const { return home() / "Documents" / "inbox"; }

  /// Opens the companion 7 seconds after the phone was started, at 09:41:07.
  Program program() const;
  Ended open() const { return run(program()); }

 private:
  ScratchFolder folder_;
};

// Hand-offs.

companion::Record imageRecord();
companion::Record videoRecord();
ios::NSDictionary dictionaryOf(const companion::Record& record);
ios::Bytes archiveOf(const ios::PropertyList& root);
/// A keyed archive with `objects` as they are, its root the object at index 1.
ios::Bytes archiveOfObjects(ios::NSArray objects);
ios::Bytes jpeg(int width = 75, int height = 133);
/// The pasteboard's file with these items.
ios::Bytes pasteboardOf(ios::NSArray items, ios::PropertyList changeCount = 1);
ios::NSDictionary imageItem();

/// A report as it comes out of a good hand-off.
companion::Report report(const std::string& screenName = "ListViewController", int changeCount = 1);

}  // namespace companion_tests
