#include "simulator/remote/RunFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "simulator/remote/Refusal.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr int kWaiting = 64;

sockaddr_un addressOf(const fs::path& socket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = socket.string();
  if (path.size() >= sizeof address.sun_path)
    throw Refusal(Exit::system, "The path of a socket would be too long: " + path +
                                    ". Set XDG_RUNTIME_DIR to a shorter folder.");
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

[[noreturn]] void refuse(const std::string& what, const fs::path& path) {
  throw Refusal(Exit::system, "Could not " + what + " " + path.string() + ": " + std::strerror(errno));
}

}  // namespace

RunFolder::RunFolder(fs::path folder) : folder_(std::move(folder)) {
  if (::mkdir(folder_.c_str(), 0700) != 0 && errno != EEXIST) refuse("make", folder_);
  struct stat found {};
  if (::lstat(folder_.c_str(), &found) != 0) refuse("look at", folder_);
  if (!S_ISDIR(found.st_mode) || found.st_uid != ::geteuid() || (found.st_mode & 077) != 0)
    throw Refusal(Exit::noPermission, folder_.string() +
                                          " is not a folder that only you can open. Remove it, or set "
                                          "XDG_RUNTIME_DIR to a folder of yours.");
}

RunFolder RunFolder::ofUser() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::error_code error;
  if (runtime && fs::path(runtime).is_absolute() && fs::is_directory(runtime, error))
    return RunFolder(fs::path(runtime) / "tellvane");
  fs::path temporary = fs::temp_directory_path(error);
  if (error) temporary = "/tmp";
  return RunFolder(temporary / ("tellvane-" + std::to_string(::geteuid())));
}

ios::FileDescriptor RunFolder::listenAs(const std::string& udid) const {
  // Sockets come and go under a lock of the folder, and listen before they have their own name: one that nobody
  // listens at belongs to a process that has ended.
  const ios::FileDescriptor lock(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock || ::flock(lock.number(), LOCK_EX) != 0) refuse("lock", folder_);
  sweep();
  const fs::path socket = socketOf(udid), fresh = folder_ / ("." + udid);
  ios::FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!listener) refuse("make the socket", socket);
  const sockaddr_un address = addressOf(fresh);
  addressOf(socket);
  ::unlink(fresh.c_str());
  const mode_t before = ::umask(0177);
  const int bound = ::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  ::umask(before);
  if (bound != 0) refuse("make the socket", fresh);
  if (::listen(listener.number(), kWaiting) != 0 || ::rename(fresh.c_str(), socket.c_str()) != 0)
    refuse("listen at", socket);
  return listener;
}

void RunFolder::remove(const std::string& udid) const {
  ::unlink(socketOf(udid).c_str());
}

void RunFolder::sweep() const {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    if (entry.path().extension() == ".socket" && !connect(entry.path()) && errno == ECONNREFUSED)
      ::unlink(entry.path().c_str());
  }
}

std::vector<std::string> RunFolder::booted() const {
  std::vector<std::string> udids;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    if (entry.path().extension() == ".socket" && connect(entry.path()))
      udids.push_back(entry.path().stem().string());
  }
  std::sort(udids.begin(), udids.end());
  return udids;
}

ios::FileDescriptor RunFolder::connect(const fs::path& socket) {
  const sockaddr_un address = addressOf(socket);
  ios::FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!connection) refuse("make a socket for", socket);
  if (::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
    return connection;
  const int code = errno;
  connection.close();
  errno = code;  // ECONNREFUSED when nobody listens any more
  return {};
}

bool RunFolder::isOurs(int connection) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

}  // namespace simulator
