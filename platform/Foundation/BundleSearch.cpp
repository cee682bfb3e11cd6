#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "Device/Files.h"
#include "Foundation/Private/BundleSearch.h"

namespace ios {
namespace {

namespace fs = std::filesystem;

class Search {
 public:
  /// `folder` if it is a framework.
  void lookAt(const fs::path& folder) {
    std::error_code error;
    if (folder.extension() != ".framework" || !fs::is_directory(folder, error)) return;
    if (std::find(found.begin(), found.end(), folder) == found.end()) found.push_back(folder);
  }

  void lookInside(const fs::path& folder) {
    std::vector<fs::path> entries = filesIn(folder);
    std::erase_if(entries, [](const fs::path& entry) { return entry.extension() != ".framework"; });
    std::sort(entries.begin(), entries.end());  // the order on disk differs from machine to machine
    for (const auto& entry : entries) lookAt(entry);
  }

  void lookAround(const fs::path& folder) {
    lookAt(folder);
    lookInside(folder);
    lookInside(folder / "Frameworks");
  }

  std::vector<fs::path> found;
};

std::vector<fs::path> foldersOfLoadedImages() {
  std::vector<fs::path> folders;
  ::dl_iterate_phdr(
      [](dl_phdr_info* image, std::size_t, void* context) {
        auto& folders = *static_cast<std::vector<fs::path>*>(context);
        const fs::path file = image->dlpi_name ? image->dlpi_name : "";
        const fs::path folder = file.is_absolute() ? file.parent_path().lexically_normal() : fs::path();
        if (!folder.empty() && std::find(folders.begin(), folders.end(), folder) == folders.end()) {
          folders.push_back(folder);
        }
        return 0;
      },
      &folders);
  return folders;
}

}  // namespace

std::vector<fs::path> frameworkFolders(const fs::path& mainBundle) {
  Search search;
  search.lookInside(mainBundle / "Frameworks");
  search.lookInside(mainBundle);
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (!error) search.lookAround(executable.parent_path());
  for (const auto& folder : foldersOfLoadedImages()) search.lookAround(folder);
  const char* listed = std::getenv("IOS_FRAMEWORK_PATH");
  for (std::string rest = listed ? listed : ""; !rest.empty();) {
    const auto colon = rest.find(':');
    if (colon != 0) search.lookAround(rest.substr(0, colon));
    rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
  }
  return search.found;
}

}  // namespace ios
