#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "simulator/server/Access.h"
#include "simulator/server/FileTree.h"
#include "simulator/server/KeptFiles.h"

namespace simulator {

/// The subprotocol that a viewer's connection speaks.
inline constexpr std::string_view kViewerProtocol = "tellvane.1";

/// What of a request matters here; a header that it lacks is empty.
struct PageRequest {
  std::string method, target, host, origin, cookie, range;
};

/// The answer to one, apart from the length and the connection's own headers.
struct PageReply {
  struct FilePart {
    OpenFile file;
    std::uint64_t first = 0, count = 0;
  };
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::variant<std::string, KeptFiles::Content, FilePart> body;
};

/// What the server serves under which address, and to whom. The page's own files are in the program; a person's are
/// those of the companion's inbox and the photo library, and what is kept in memory. Server's thread.
class Routes {
 public:
  struct Roots {
    std::filesystem::path inbox, movies;
  };
  Routes(const Access& access, Roots roots, const KeptFiles& kept)
      : access_(access), roots_(std::move(roots)), kept_(kept) {}

  PageReply answer(const PageRequest& request) const;
  /// Why this request may not become a viewer's connection; empty if it may. `protocols` is the header that
  /// carries the page's secret.
  std::string refusalOfViewer(const PageRequest& request, const std::string& protocols) const;
  /// A refusal with one line that says why.
  static PageReply refusal(int status, const std::string& line);

 private:
  PageReply exchange(const std::string& token) const;
  PageReply pageFile(const std::string& name) const;
  PageReply personsFile(const std::string& path, const PageRequest& request) const;

  const Access& access_;
  const Roots roots_;
  const KeptFiles& kept_;
};

}  // namespace simulator
