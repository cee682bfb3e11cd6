#include "simulator/remote/PhoneLink.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "simulator/live/Json.h"
#include "simulator/remote/Interruption.h"
#include "simulator/remote/Refusal.h"
#include "simulator/remote/RunFolder.h"

namespace simulator {
namespace {

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

constexpr std::size_t kLongestLine = 8 << 20;
constexpr std::chrono::seconds kPatienceWithGreeting{20};

int timeoutUntil(const Deadline& deadline) {
  if (!deadline) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::int64_t>(0, left.count()));
}

[[noreturn]] void ended() {
  throw Refusal(Exit::protocol, "The phone has ended. Boot it again with: tellvane-sim boot");
}

[[noreturn]] void nonsense() {
  throw Refusal(Exit::protocol,
                "The phone said something that this program does not know; they are of different "
                "versions. Shut it down and boot it again.");
}

}  // namespace

PhoneLink PhoneLink::open(const std::string& udid) {
  auto socket = RunFolder::connect(RunFolder::ofUser().socketOf(udid));
  if (!socket)
    throw Refusal(Exit::noDevice, udid + " is not booted. Boot it with: tellvane-sim boot " + udid);
  if (!RunFolder::isOurs(socket.number()))
    throw Refusal(Exit::noPermission, "The phone " + udid + " belongs to another user.");
  return PhoneLink(std::move(socket), udid);
}

PhoneLink::PhoneLink(ios::FileDescriptor socket, std::string udid) : socket_(std::move(socket)) {
  const std::string first = line(std::chrono::steady_clock::now() + kPatienceWithGreeting);
  const auto members = readJson(first);
  if (!members) nonsense();
  const ios::PropertyList list(*members);
  const auto* process = list.member("process");
  for (const auto& [key, value] : {std::pair{"udid", &greeting_.udid},
                                   {"name", &greeting_.name},
                                   {"profile", &greeting_.profile},
                                   {"folder", &greeting_.folder},
                                   {"page", &greeting_.page}}) {
    const std::string* found = list.text(key);
    if (!found) nonsense();
    *value = *found;
  }
  if (greeting_.udid != udid || !process || !process->integer()) nonsense();
  greeting_.process = static_cast<pid_t>(*process->integer());
  process_ = ios::FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, greeting_.process, 0)));
}

std::string PhoneLink::Answer::text(const std::string& key) const {
  const auto found = members.find(key);
  return found != members.end() && found->second.text() ? *found->second.text() : "";
}

PhoneLink::Answer PhoneLink::ask(const std::string& command, ios::NSDictionary members) {
  members["command"] = command;
  members["id"] = ++lastId_;
  const std::string message = jsonText(members) + "\n";
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t count =
        ::send(socket_.number(), message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
    if (count > 0) sent += static_cast<std::size_t>(count);
    if (count < 0 && errno == EINTR && Interruption::ofProcess().isRaised()) throw Interrupted{};
    if (count < 0 && errno != EINTR) ended();
  }
  for (;;) {
    auto read = readJson(line(std::nullopt));
    if (!read) nonsense();
    const auto id = read->find("answer");
    if (id == read->end()) {
      news_.push_back(std::move(*read));
      continue;
    }
    if (!id->second.integer() || *id->second.integer() != lastId_)
      continue;  // of a command that was given up
    Answer answer{std::move(*read), {}};
    if (const auto bytes = answer.members.find("bytes"); bytes != answer.members.end()) {
      const std::int64_t* size = bytes->second.integer();
      if (!size || *size < 0) nonsense();
      while (buffer_.size() < static_cast<std::size_t>(*size)) readMore(std::nullopt);
      answer.bytes = buffer_.substr(0, static_cast<std::size_t>(*size));
      buffer_.erase(0, answer.bytes.size());
    }
    if (const std::string problem = answer.text("problem"); !problem.empty())
      throw Refusal(Exit::refused, problem);
    return answer;
  }
}

ios::NSDictionary PhoneLink::next() {
  return *nextWithin(std::chrono::hours(24 * 365));
}

std::optional<ios::NSDictionary> PhoneLink::nextWithin(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (news_.empty()) {
    const std::string text = line(deadline);
    if (text.empty()) return std::nullopt;
    auto read = readJson(text);
    if (!read) nonsense();
    if (!read->contains("answer")) return read;
  }
  auto oldest = std::move(news_.front());
  news_.pop_front();
  return oldest;
}

/// Empty at the deadline.
std::string PhoneLink::line(Deadline deadline) {
  for (;;) {
    if (const std::size_t end = buffer_.find('\n'); end != std::string::npos) {
      std::string text = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return text;
    }
    if (buffer_.size() > kLongestLine) nonsense();
    if (!readMore(deadline)) return {};
  }
}

bool PhoneLink::readMore(Deadline deadline) {
  std::array<char, 64 << 10> piece;
  for (;;) {
    pollfd watched[] = {{socket_.number(), POLLIN, 0}, {Interruption::ofProcess().descriptor(), POLLIN, 0}};
    const int ready = ::poll(watched, 2, timeoutUntil(deadline));
    if (ready < 0 && errno != EINTR) ended();
    if (Interruption::ofProcess().isRaised()) throw Interrupted{};
    if (ready == 0) return false;
    if (ready < 0 || watched[0].revents == 0) continue;
    const ssize_t count = ::recv(socket_.number(), piece.data(), piece.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) ended();
    buffer_.append(piece.data(), static_cast<std::size_t>(count));
    return true;
  }
}

void PhoneLink::waitForEnd() {
  while (process_) {
    pollfd watched[] = {{process_.number(), POLLIN, 0}, {Interruption::ofProcess().descriptor(), POLLIN, 0}};
    const int ready = ::poll(watched, 2, -1);
    if (Interruption::ofProcess().isRaised()) throw Interrupted{};
    if (ready > 0 && watched[0].revents != 0) return;
  }
}

}  // namespace simulator
