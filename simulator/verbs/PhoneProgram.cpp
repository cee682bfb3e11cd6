#include "simulator/verbs/PhoneProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Base/FileDescriptor.h"
#include "simulator/remote/Interruption.h"
#include "simulator/remote/Process.h"
#include "simulator/remote/Refusal.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr int kReady = 3;  // the descriptor, in the new process

std::vector<char*> argumentsFor(std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  return arguments;
}

/// All that comes until the other end closes; throws Interrupted.
std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    pollfd watched[] = {{descriptor, POLLIN, 0}, {Interruption::ofProcess().descriptor(), POLLIN, 0}};
    if (::poll(watched, 2, -1) < 0 && errno != EINTR) return text;
    if (Interruption::ofProcess().isRaised()) throw Interrupted{};
    if (watched[0].revents == 0) continue;
    const ssize_t count = ::read(descriptor, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

std::string phoneProgram() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& path : {folder / "simulator", folder / TELLVANE_FROM_BIN_TO_PHONE / "simulator"}) {
    if (::access(path.c_str(), X_OK) == 0) return path.lexically_normal();
  }
  throw Refusal(Exit::unavailable, "The phone's program is not here: " + (folder / "simulator").string() +
                                       ". Build or install all of Tellvane.");
}

void becomePhoneProgram(const std::vector<std::string>& words) {
  std::vector<std::string> all = {phoneProgram()};
  all.insert(all.end(), words.begin(), words.end());
  ::execv(all.front().c_str(), argumentsFor(all).data());
  throw Refusal(Exit::system, "Could not start " + all.front() + ": " + std::strerror(errno));
}

void startPhoneProgram(const std::vector<std::string>& words, const std::string& log) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0)
    throw Refusal(Exit::system, std::string("No pipe: ") + std::strerror(errno));
  const ios::FileDescriptor ours(ends[0]);
  ios::FileDescriptor theirs(ends[1]);
  std::vector<std::string> all = {phoneProgram()};
  all.insert(all.end(), words.begin(), words.end());
  all.insert(all.end(), {"--ready", std::to_string(kReady)});
  const Process process =
      Process::start({.words = std::move(all), .output = log, .ready = theirs.number(), .ownSession = true});
  theirs.close();
  std::string said;
  try {
    said = readAll(ours.number());
  } catch (const Interrupted&) {
    process.signal(SIGTERM);
    process.wait();
    throw;
  }
  if (said == "ready\n") return;
  process.wait();
  while (said.ends_with('\n')) said.pop_back();
  throw Refusal(Exit::system,
                said.empty() ? "The phone ended while it was switched on; what it said is in " + log : said);
}

}  // namespace simulator
