#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "simulator/server/PictureEncoder.h"
#include "simulator/server/Private/Net.h"
#include "simulator/server/Private/ServerCore.h"
#include "simulator/server/Rate.h"
#include "simulator/server/ViewerMessage.h"
#include "simulator/server/ViewerPictures.h"

namespace simulator {

/// One page that is open: what it says goes to the inbox; pictures and texts go to it in order.
class Viewer : public std::enable_shared_from_this<Viewer> {
 public:
  Viewer(beast::tcp_stream stream, ServerCore& core, ViewerId id);
  void start(const http::request<http::string_body>& request);
  void say(const std::string& topic, const std::string& message);
  bool watches(const std::string& topic) const { return watched_.contains(topic); }
  void applied(std::uint32_t touch, bool visible);
  void changed(const PixelRect& rect);
  /// The picture that was ordered last.
  void encoded(const Picture& picture);
  void close(websocket::close_code code, const std::string& reason);

 private:
  struct Outgoing {
    std::string topic;  // a newer message of the same topic takes its place; empty: none does
    bool binary = false;
    std::shared_ptr<const std::string> bytes;
  };
  void read();
  void received(const std::string& message);
  void obey(CommandMessage command);
  void answer(std::int64_t id, ios::NSDictionary members);
  std::string setView(const ios::NSDictionary& members);
  std::string setWatch(const ios::NSDictionary& members);
  void look();
  void queue(Outgoing message);
  void write();
  void finish();
  void leave();

  websocket::stream<beast::tcp_stream> socket_;
  ServerCore& core_;
  const ViewerId id_;
  beast::flat_buffer incoming_;
  std::deque<Outgoing> outgoing_;
  std::size_t queued_ = 0;
  bool writing_ = false, left_ = false;
  std::optional<websocket::close_reason> goodbye_;
  Rate messages_{600, 1200};

  ViewerPictures pictures_;
  asio::steady_timer rest_;
  std::set<std::string> watched_;
  int roomWidth_ = 0, roomHeight_ = 0;
  bool hidden_ = false;  // nobody sees the page
  Display::Shape known_;
  int knownWidth_ = 0, knownHeight_ = 0;
  std::uint32_t touch_ = 0;
  PictureStamp stamp_;  // of the picture that was ordered last
};

}  // namespace simulator
