#include "simulator/phone/BoundedLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace simulator {
namespace {

std::string_view noteOf(std::string_view text) {
  return text.starts_with("[") ? text.substr(0, text.find('\n') + 1) : std::string_view();
}

}  // namespace

BoundedLog::BoundedLog(const std::filesystem::path& file, std::size_t limit)
    : file_(::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644)), limit_(limit) {
  if (!file_) problem_ = errno;
}

void BoundedLog::append(std::string_view bytes) {
  // In halves, so that there is room for the note and what is kept.
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), limit_ / 4))) {
    const std::string_view piece = bytes.substr(0, limit_ / 4);
    if (size_ + piece.size() > limit_) dropOldest(limit_ / 2);
    write(piece);
  }
}

void BoundedLog::dropOldest(std::size_t keep) {
  std::string all(size_, '\0');
  const ssize_t count = ::pread(file_.number(), all.data(), all.size(), 0);
  all.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  const std::size_t note = dropped_ > 0 ? noteOf(all).size() : 0;
  std::size_t start = all.size() > keep ? all.size() - keep : 0;
  if (const std::size_t end = all.find('\n', start); end != std::string::npos) start = end + 1;
  start = std::max(start, note);
  dropped_ += start - note;
  if (::ftruncate(file_.number(), 0) != 0 && problem_ == 0) problem_ = errno;
  size_ = 0;
  write("[" + std::to_string(dropped_) + " bytes before this were dropped]\n");
  write(std::string_view(all).substr(start));
}

void BoundedLog::write(std::string_view bytes) {
  if (problem_ != 0) return;
  problem_ =
      ios::writeAll(file_.number(), {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  size_ += bytes.size();
}

}  // namespace simulator
