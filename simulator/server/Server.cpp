#include "simulator/server/Server.h"

#include <stdexcept>

#include "simulator/server/Private/Connection.h"
#include "simulator/server/Private/ServerCore.h"
#include "simulator/server/Private/Viewer.h"

namespace simulator {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kMostConnections = 512;

}  // namespace

ServerCore::ServerCore(const Server::Options& options, CommandInbox& inbox, const Display& display)
    : inbox_(inbox), display_(display) {
  error_code error;
  const auto address = asio::ip::make_address(options.listen, error);
  if (error) throw std::runtime_error("not an address to listen at: " + options.listen);
  const tcp::endpoint endpoint(address, options.port);
  acceptor_.open(endpoint.protocol());
  acceptor_.set_option(asio::socket_base::reuse_address(true));
  acceptor_.bind(endpoint, error);
  if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
  if (error) {
    throw std::runtime_error("could not listen at " + options.listen + ", port " +
                             std::to_string(options.port) + ": " + error.message());
  }
  access_ = std::make_unique<Access>(options.listen, acceptor_.local_endpoint().port());
  routes_ = std::make_unique<Routes>(*access_, options.roots, kept_);
}

ServerCore::~ServerCore() {
  if (thread_.joinable()) {
    post([this] {
      closing_ = true;
      acceptor_.close();
      acceptAgain_.cancel();
      for (const auto& [id, viewer] : std::map(viewers_))
        viewer->close(websocket::close_code::going_away, "The phone has been switched off.");
      acceptAgain_.expires_after(milliseconds(viewers_.empty() ? 0 : 500));
      acceptAgain_.async_wait([this](error_code) { io_.stop(); });
    });
    thread_.join();
  }
  encoders_.join();
}

void ServerCore::accept() {
  acceptor_.async_accept([this](error_code error, tcp::socket socket) {
    if (closing_) return;
    if (error) {  // out of descriptors, most likely
      acceptAgain_.expires_after(milliseconds(100));
      acceptAgain_.async_wait([this](error_code cancelled) {
        if (!cancelled) accept();
      });
      return;
    }
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    // One too many is let go without a word: an answer would be work for whoever floods the server.
    if (connections_ < kMostConnections) std::make_shared<Connection>(std::move(socket), *this)->read();
    accept();
  });
}

void ServerCore::admit(const std::shared_ptr<Viewer>& viewer) {
  viewers_[lastViewer_] = viewer;
}

void ServerCore::dismiss(ViewerId viewer) {
  if (viewers_.erase(viewer) > 0) inbox_.put(LiveDeparture{viewer});
}

Viewer* ServerCore::viewer(ViewerId id) {
  const auto found = viewers_.find(id);
  return found == viewers_.end() ? nullptr : found->second.get();
}

void ServerCore::encode(const std::shared_ptr<Viewer>& viewer, const PictureOrder& order) {
  if (ordered_.empty()) post([this] { encodeOrdered(); });
  ordered_.emplace_back(viewer, order);
}

void ServerCore::encodeOrdered() {
  auto ordered = std::exchange(ordered_, {});
  while (!ordered.empty()) {
    const PictureOrder order = ordered.front().second;
    std::vector<std::shared_ptr<Viewer>> viewers;
    std::erase_if(ordered, [&](const auto& each) {
      if (each.second == order) viewers.push_back(each.first);
      return each.second == order;
    });
    asio::post(encoders_, [this, order, viewers = std::move(viewers)] {
      auto picture = std::make_shared<Picture>(encodePicture(display_, order));
      post([picture, viewers] {
        for (const auto& each : viewers) each->encoded(*picture);
      });
    });
  }
}

void ServerCore::toAll(const std::string& topic, const std::string& message, bool onDemand) {
  for (const auto& [id, viewer] : std::map(viewers_)) {
    if (!onDemand || viewer->watches(topic)) viewer->say(topic, message);
  }
}

Server::Server(const Options& options, CommandInbox& inbox, const Display& display)
    : core_(std::make_unique<ServerCore>(options, inbox, display)) {}

Server::~Server() = default;

void Server::open() {
  core_->accept();
  core_->thread_ = std::thread([core = core_.get()] { core->io_.run(); });
}

std::string Server::address() const {
  return core_->access_->address();
}

std::string Server::filePrefix() const {
  return core_->access_->filePrefix();
}

void Server::topic(const std::string& name, std::string text) {
  core_->post([core = core_.get(), name, text = std::move(text)] {
    core->announcements_.setTopic(name, text);
    core->toAll(name, text);
  });
}

void Server::topicOnDemand(const std::string& name, std::string text) {
  core_->post([core = core_.get(), name, text = std::move(text)] { core->toAll(name, text, true); });
}

void Server::consoleLines(std::vector<std::string> lines) {
  core_->post([core = core_.get(), lines = std::move(lines)] {
    core->announcements_.addLines(lines);
    core->toAll("", Announcements::consoleMessage({lines.begin(), lines.end()}, false));
  });
}

void Server::remark(std::string text) {
  core_->post([core = core_.get(), text = std::move(text)] { core->toAll("", text); });
}

void Server::touchesApplied(ViewerId viewer, std::uint32_t number, bool visible) {
  core_->post([core = core_.get(), viewer, number, visible] {
    if (Viewer* toucher = core->viewer(viewer)) toucher->applied(number, visible);
  });
}

void Server::displayChanged(const PixelRect& rect, std::chrono::nanoseconds time) {
  core_->post([core = core_.get(), rect, time] {
    core->phoneTime_ = time;
    for (const auto& [id, viewer] : std::map(core->viewers_)) viewer->changed(rect);
  });
}

std::string Server::keepFile(const std::string& name, std::string bytes) {
  return filePrefix() + "kept/" + core_->kept_.keep(name, std::move(bytes));
}

}  // namespace simulator
