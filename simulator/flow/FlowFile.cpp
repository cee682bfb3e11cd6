#include "simulator/flow/FlowFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>

#include "Base/FileDescriptor.h"
#include "CoreFoundation/Unicode.h"
#include "simulator/flow/YamlFields.h"

namespace simulator {
namespace {

constexpr std::size_t kLongestFlow = 4 << 20;

ios::FileDescriptor opened(const std::string& shown) {
  if (shown == "-") return ios::FileDescriptor(::dup(STDIN_FILENO));
  return ios::FileDescriptor(::open(shown.c_str(), O_RDONLY | O_CLOEXEC));
}

std::string contents(const std::string& shown) {
  const ios::FileDescriptor file = opened(shown);
  if (!file && errno == ENOENT) throw FlowError(shown, 0, "there is no such flow");
  struct stat status {};
  if (!file || ::fstat(file.number(), &status) != 0)
    throw FlowError(shown, 0, "could not be read: " + std::generic_category().message(errno));
  if (S_ISDIR(status.st_mode)) throw FlowError(shown, 0, "this is a folder, not a flow");
  std::string text;
  std::array<char, 1 << 16> piece;
  for (;;) {
    const ssize_t count = ::read(file.number(), piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FlowError(shown, 0, "could not be read: " + std::generic_category().message(errno));
    if (count == 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(count));
    if (text.size() > kLongestFlow) throw FlowError(shown, 0, "this is too long for a flow");
  }
}

/// Line of the first place that is not text in UTF-8; 0 if there is none.
int lineOfBadText(const std::string& text) {
  int number = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = std::string_view(text).substr(start, end - start);
    ++number;
    if (!ios::isUTF8(line) || line.find('\0') != std::string_view::npos) return number;
    start = end + 1;
  }
  return 0;
}

}  // namespace

std::vector<YAML::Node> readDocuments(const std::filesystem::path& file) {
  const std::string shown = file.string();
  const std::string text = contents(shown);
  if (const int line = lineOfBadText(text)) throw FlowError(shown, line, "this is not text in UTF-8");
  const int lines = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  try {
    // The parser takes the end of the text for the end of a quote. Behind a quote that is still open one more
    // document cannot begin.
    std::vector<YAML::Node> documents = YAML::LoadAll(text + "\n---\nend\n");
    documents.pop_back();
    return documents;
  } catch (const YAML::ParserException& problem) {
    if (problem.mark.line > lines)
      throw FlowError(shown, lines + 1, "this is not valid YAML: something is left open");
    throw FlowError(shown, problem.mark.line + 1, "this is not valid YAML: " + problem.msg);
  } catch (const YAML::Exception& problem) {
    throw FlowError(shown, 0, "could not be read: " + problem.msg);
  }
}

}  // namespace simulator
