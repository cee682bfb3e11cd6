#pragma once

#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "simulator/server/Announcements.h"
#include "simulator/server/PictureEncoder.h"
#include "simulator/server/Private/Net.h"
#include "simulator/server/Rate.h"
#include "simulator/server/Server.h"

namespace simulator {

class Viewer;

/// All that lives on the server's thread.
class ServerCore {
 public:
  ServerCore(const Server::Options& options, CommandInbox& inbox, const Display& display);
  ~ServerCore();

  void post(std::function<void()> work) { asio::post(io_, std::move(work)); }
  void accept();
  void admit(const std::shared_ptr<Viewer>& viewer);
  void dismiss(ViewerId viewer);
  Viewer* viewer(ViewerId id);
  /// Has a picture made for a viewer, who then gets it by `encoded`. Orders that are equal and come together, as when
  /// several look at the same size, are one.
  void encode(const std::shared_ptr<Viewer>& viewer, const PictureOrder& order);
  void toAll(const std::string& topic, const std::string& message, bool onDemand = false);

  CommandInbox& inbox_;
  const Display& display_;
  asio::io_context io_{1};
  asio::thread_pool encoders_{1};
  std::vector<std::pair<std::shared_ptr<Viewer>, PictureOrder>> ordered_;
  tcp::acceptor acceptor_{io_};
  asio::steady_timer acceptAgain_{io_};
  Rate requests_{200, 400};
  std::size_t connections_ = 0;
  ViewerId lastViewer_ = 0;
  std::map<ViewerId, std::shared_ptr<Viewer>> viewers_;
  Announcements announcements_;
  KeptFiles kept_;
  std::unique_ptr<Access> access_;
  std::unique_ptr<Routes> routes_;
  std::chrono::nanoseconds phoneTime_{};
  bool closing_ = false;
  std::thread thread_;

 private:
  void encodeOrdered();
};

}  // namespace simulator
