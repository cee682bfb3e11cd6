#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simulator {

/// Who gets in. Everything secret is drawn anew at every start and compared in constant time.
///
/// Four secrets, since each travels another way: the token is in the printed address; the cookie, which browsers
/// send to every port of an address, opens the page alone; the page's secret is in no cookie and no body and is
/// asked for wherever something can be changed; the file key is part of the address of files, which sandboxed
/// frames fetch without a cookie.
class Access {
 public:
  /// `host` is the address as the printed URL has it.
  Access(std::string host, std::uint16_t port);

  /// "http://127.0.0.1:8765", as browsers send it.
  std::string origin() const { return "http://" + authority_; }
  std::string address() const { return origin() + "/?token=" + token_; }
  /// "/files/<key>/"
  std::string filePrefix() const { return "/files/" + fileKey_ + "/"; }
  /// Value of a Set-Cookie header.
  std::string setCookie() const;
  const std::string& secret() const { return secret_; }

  bool isToken(std::string_view token) const;
  bool isSecret(std::string_view secret) const;
  bool isFileKey(std::string_view key) const;
  /// Whether a Cookie header has our cookie.
  bool hasCookie(std::string_view header) const;
  /// Whether a Host header names this server exactly. One that listens on every address takes any address that
  /// is written in numbers: no name, so that no name can be made to lead here.
  bool isHost(std::string_view host) const;
  /// Whether an Origin header names the server at `host`.
  bool isOrigin(std::string_view origin, std::string_view host) const;

 private:
  std::string cookieName() const { return "tellvane_" + port_; }

  std::string port_, authority_;
  bool everyAddress_;
  std::string token_, cookie_, secret_, fileKey_;
};

}  // namespace simulator
