#include "simulator/cli/OutputFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sstream>
#include <system_error>

#include "Device/Files.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMarker = ".tellvane-run";
const std::string kFirstLine = "A run of the Tellvane simulator left these here", kProcess = "; process ";

std::string systemText(int code) {
  return std::generic_category().message(code);
}

std::string contents(int descriptor) {
  std::string text;
  std::array<char, 4096> piece;
  for (off_t at = 0;;) {
    const ssize_t count = ::pread(descriptor, piece.data(), piece.size(), at);
    if (count <= 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(count));
    at += count;
  }
}

/// A name that a marker may have: relative, and inside the folder.
bool isInside(const std::string& name) {
  const fs::path path(name);
  return !name.empty() && path.is_relative() && std::find(path.begin(), path.end(), "..") == path.end() &&
         path.lexically_normal() != ".";
}

}  // namespace

std::unique_ptr<OutputFolder> OutputFolder::take(const fs::path& path, std::string& problem) {
  if (const auto failure = ios::createFolder(path)) {
    problem = failure->description();
    return nullptr;
  }
  ios::FileDescriptor marker(
      ::open((path / kMarker).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
  if (!marker) {
    problem = systemText(errno);
    return nullptr;
  }
  if (::flock(marker.number(), LOCK_EX | LOCK_NB) != 0) {
    const std::string text = contents(marker.number());
    problem = "another run holds it";
    const std::size_t process = kFirstLine.size() + kProcess.size();
    if (text.starts_with(kFirstLine + kProcess))
      problem += ": process " + text.substr(process, text.find('\n') - process);
    return nullptr;
  }
  std::unique_ptr<OutputFolder> folder(new OutputFolder(path, std::move(marker)));
  problem = folder->readMarker();
  if (problem.empty()) problem = folder->writeMarker();
  return problem.empty() ? std::move(folder) : nullptr;
}

std::string OutputFolder::readMarker() {
  std::istringstream lines(contents(marker_.number()));
  std::string line;
  if (!std::getline(lines, line)) return {};  // new
  if (!line.starts_with(kFirstLine)) return "its \"" + std::string(kMarker) + "\" is not a run's";
  while (std::getline(lines, line)) {
    if (isInside(line)) names_.insert(line);
  }
  return {};
}

OutputFolder::~OutputFolder() {
  writeMarker(During::rest);
}

std::string OutputFolder::writeMarker(During when) {
  std::string text = kFirstLine + (when == During::run ? kProcess + std::to_string(::getpid()) : "") + "\n";
  for (const std::string& name : names_) text += name + "\n";
  int code = ::ftruncate(marker_.number(), 0) == 0 && ::lseek(marker_.number(), 0, SEEK_SET) == 0 ? 0 : errno;
  if (code == 0)
    code = ios::writeAll(marker_.number(), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  return code == 0 ? "" : "could not write " + std::string(kMarker) + ": " + systemText(code);
}

std::string OutputFolder::clear() {
  for (const std::string& name : names_) {
    if (const auto failure = ios::removeTree(path_ / name)) return failure->description();
  }
  names_.clear();
  return writeMarker();
}

std::string OutputFolder::claim(const std::string& name) {
  std::error_code error;
  if (names_.contains(name)) return {};
  if (fs::exists(fs::symlink_status(path_ / name, error)))
    return "its \"" + name + "\" comes from elsewhere and would be replaced";
  names_.insert(name);
  return writeMarker();
}

std::string OutputFolder::write(const std::string& name, const ios::Bytes& bytes) {
  if (std::string problem = claim(name); !problem.empty()) return problem;
  const auto failure = ios::writeFileAtomically(path_ / name, bytes);
  return failure ? failure->description() : "";
}

}  // namespace simulator
