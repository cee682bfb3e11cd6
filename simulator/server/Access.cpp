#include "simulator/server/Access.h"

#include <arpa/inet.h>
#include <sys/random.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace simulator {
namespace {

/// 64 hexadecimal digits that nobody can guess.
std::string drawSecret() {
  std::array<unsigned char, 32> bytes{};
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = ::getrandom(bytes.data() + filled, bytes.size() - filled, 0);
    if (count < 0 && errno != EINTR) throw std::runtime_error("no random numbers");
    if (count > 0) filled += static_cast<std::size_t>(count);
  }
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

bool equal(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned char difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

std::string withBrackets(const std::string& host) {
  return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

bool isNumericAddress(std::string_view host) {
  in6_addr address{};
  if (host.starts_with('[') && host.ends_with(']'))
    return ::inet_pton(AF_INET6, std::string(host.substr(1, host.size() - 2)).c_str(), &address) == 1;
  return ::inet_pton(AF_INET, std::string(host).c_str(), &address) == 1;
}

}  // namespace

Access::Access(std::string host, std::uint16_t port)
    : port_(std::to_string(port)),
      authority_(withBrackets(host) + ":" + port_),
      everyAddress_(host == "0.0.0.0" || host == "::"),
      token_(drawSecret()),
      cookie_(drawSecret()),
      secret_(drawSecret()),
      fileKey_(drawSecret()) {}

std::string Access::setCookie() const {
  return cookieName() + "=" + cookie_ + "; HttpOnly; SameSite=Lax; Path=/";
}

bool Access::isToken(std::string_view token) const {
  return equal(token, token_);
}

bool Access::isSecret(std::string_view secret) const {
  return equal(secret, secret_);
}

bool Access::isFileKey(std::string_view key) const {
  return equal(key, fileKey_);
}

bool Access::hasCookie(std::string_view header) const {
  const std::string wanted = cookieName() + "=" + cookie_;
  bool found = false;
  while (!header.empty()) {
    const std::size_t end = std::min(header.find(';'), header.size());
    std::string_view pair = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    while (pair.starts_with(' ')) pair.remove_prefix(1);
    found |= equal(pair, wanted);
  }
  return found;
}

bool Access::isHost(std::string_view host) const {
  if (host == authority_) return true;
  const std::string suffix = ":" + port_;
  return everyAddress_ && host.ends_with(suffix) &&
         isNumericAddress(host.substr(0, host.size() - suffix.size()));
}

bool Access::isOrigin(std::string_view origin, std::string_view host) const {
  return isHost(host) && origin == "http://" + std::string(host);
}

}  // namespace simulator
