#include "simulator/verbs/Booted.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

#include "simulator/remote/Refusal.h"
#include "simulator/remote/RunFolder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

std::string onlyBooted() {
  const auto booted = RunFolder::ofUser().booted();
  if (booted.size() == 1) return booted.front();
  if (booted.empty())
    throw Refusal(Exit::noDevice, "No phone is booted. Boot one with: tellvane-sim boot DEVICE");
  throw Refusal(Exit::usage, std::to_string(booted.size()) +
                                 " phones are booted; \"booted\" does not say which. Name one of: "
                                 "tellvane-sim list devices");
}

/// 0, or the errno.
int writeAllOf(int descriptor, const std::string& bytes) {
  return ios::writeAll(descriptor, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace

std::string udidOf(const std::string& device) {
  if (device == "booted") return onlyBooted();
  // A phone in a browser is in no set; it is known by its socket alone.
  for (const std::string& udid : RunFolder::ofUser().booted()) {
    if (udid == device) return udid;
  }
  return DeviceSet::ofUser().find(device).udid;
}

PhoneLink bootedPhone(const std::string& device) {
  return PhoneLink::open(udidOf(device));
}

fs::path filesOf(const std::string& device) {
  const std::string udid = udidOf(device);
  for (const auto& record : DeviceSet::ofUser().all()) {
    if (record.udid == udid) return record.device();
  }
  return PhoneLink::open(udid).greeting().folder;
}

std::optional<double> millisecondsOf(const std::string& text) {
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  const std::string unit(rest, end);
  if (error != std::errc() || !std::isfinite(value) || value < 0) return std::nullopt;
  if (unit == "ms") return value;
  if (unit.empty() || unit == "s") return value * 1000;
  if (unit == "m") return value * 60'000;
  return std::nullopt;
}

void expectWritable(const std::string& file) {
  std::error_code error;
  const fs::path folder = fs::absolute(file, error).parent_path();
  if (file != "-" && ::access(folder.c_str(), W_OK) != 0)
    throw Refusal(Exit::cannotCreate, folder.string() + " is no folder that can be written to.");
}

bool outputHasReader() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return ::poll(&output, 1, 0) <= 0 || (output.revents & POLLERR) == 0;
}

void writeOut(const std::string& file, const std::string& bytes) {
  if (file == "-") {
    if (const int code = writeAllOf(STDOUT_FILENO, bytes))
      throw Refusal(Exit::inputOutput,
                    std::string("Could not write to standard output: ") + std::strerror(code));
    return;
  }
  const std::string fresh = file + "." + std::to_string(::getpid()) + ".part";
  ios::FileDescriptor out(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!out) throw Refusal(Exit::cannotCreate, "Could not create " + file + ": " + std::strerror(errno));
  int code = writeAllOf(out.number(), bytes);
  if (code == 0) code = out.close();
  if (code == 0 && std::rename(fresh.c_str(), file.c_str()) != 0) code = errno;
  if (code == 0) return;
  ::unlink(fresh.c_str());
  throw Refusal(Exit::inputOutput, "Could not write " + file + ": " + std::strerror(code));
}

}  // namespace simulator
