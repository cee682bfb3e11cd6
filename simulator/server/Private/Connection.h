#pragma once

#include <memory>
#include <optional>
#include <string>

#include "simulator/server/Private/Net.h"
#include "simulator/server/Private/ServerCore.h"
#include "simulator/server/Routes.h"

namespace simulator {

/// One connection that asks for pages and files, one request after another, or becomes a viewer.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(tcp::socket socket, ServerCore& core);
  ~Connection();

  void read();

 private:
  void received();
  void refuse(int status, const std::string& line);
  void becomeViewer(const PageRequest& asked);
  void reply(PageReply reply);
  template <class Body>
  void send(http::response<Body> response);

  beast::tcp_stream stream_;
  ServerCore& core_;
  beast::flat_buffer buffer_;
  std::optional<http::request_parser<http::string_body>> parser_;
  bool keepAlive_ = false, head_ = false;
};

}  // namespace simulator
