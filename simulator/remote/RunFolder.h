#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Base/FileDescriptor.h"

namespace simulator {

/// Where the phones that are switched on can be reached: a socket each, in a folder that only its user can open.
/// A socket under its own name has a phone behind it, or one that ended without removing it. What goes wrong is
/// thrown as a Refusal.
class RunFolder {
 public:
  /// tellvane in $XDG_RUNTIME_DIR or, without one, tellvane-<user> in the folder for temporary files.
  static RunFolder ofUser();

  std::filesystem::path socketOf(const std::string& udid) const { return folder_ / (udid + ".socket"); }
  /// A socket that listens as this phone's. Those of phones that have ended are removed.
  ios::FileDescriptor listenAs(const std::string& udid) const;
  void remove(const std::string& udid) const;
  /// Who listens now.
  std::vector<std::string> booted() const;

  /// A connection to whoever listens; empty when nobody does.
  static ios::FileDescriptor connect(const std::filesystem::path& socket);
  /// Whether the process at the other end belongs to this user.
  static bool isOurs(int connection);

 private:
  explicit RunFolder(std::filesystem::path folder);
  void sweep() const;
  std::filesystem::path folder_;
};

}  // namespace simulator
