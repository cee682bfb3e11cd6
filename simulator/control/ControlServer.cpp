#include "simulator/control/ControlServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <deque>
#include <map>
#include <set>
#include <thread>

#include "simulator/live/Json.h"
#include "simulator/remote/Refusal.h"
#include "simulator/remote/RunFolder.h"

namespace simulator {

namespace asio = boost::asio;
using boost::system::error_code;
using stream = asio::local::stream_protocol;

namespace {

constexpr std::size_t kLongestMessage = 1 << 20, kLongestQueue = 64 << 20, kMostConnections = 64;
/// Pages count theirs from 1.
constexpr ViewerId kFirstProgram = ViewerId{1} << 32;

class Connection;

}  // namespace

/// All that lives on the server's thread.
class ControlCore {
 public:
  ControlCore(ControlServer::Options options, CommandInbox& inbox)
      : options_(std::move(options)), inbox_(inbox), folder_(RunFolder::ofUser()) {
    acceptor_.assign(stream(), folder_.listenAs(options_.udid).release());
  }
  ~ControlCore();
  void accept();
  void toWatchers(const std::string& topic, const std::string& text);

  const ControlServer::Options options_;
  CommandInbox& inbox_;
  const RunFolder folder_;
  asio::io_context io_{1};
  stream::acceptor acceptor_{io_};
  ViewerId lastProgram_ = kFirstProgram;
  std::map<ViewerId, std::weak_ptr<Connection>> connections_;
  std::map<std::string, std::string> topics_;  // their newest values
  std::thread thread_;
};

namespace {

/// A program that is connected.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(stream::socket socket, ControlCore& core, ViewerId id)
      : socket_(std::move(socket)), core_(core), id_(id), incoming_(kLongestMessage) {}

  void read();
  void say(const std::string& text);
  bool watches(const std::string& topic) const { return watched_.contains(topic); }
  void close();

 private:
  void received(const std::string& line);
  void answer(std::int64_t id, ios::NSDictionary members);
  std::string watch(const ios::NSDictionary& members);
  void write();

  stream::socket socket_;
  ControlCore& core_;
  const ViewerId id_;
  asio::streambuf incoming_;
  std::deque<std::string> outgoing_;
  std::size_t queued_ = 0;
  bool left_ = false;
  std::set<std::string> watched_;
};

void Connection::read() {
  asio::async_read_until(socket_, incoming_, '\n',
                         [self = shared_from_this()](error_code error, std::size_t size) {
                           if (error) return self->close();
                           const auto begin = asio::buffers_begin(self->incoming_.data());
                           const std::string line(begin, begin + static_cast<std::ptrdiff_t>(size));
                           self->incoming_.consume(size);
                           self->received(line);
                           if (!self->left_) self->read();
                         });
}

void Connection::received(const std::string& line) {
  auto members = readJson(line);
  const ios::PropertyList message(members ? *members : ios::NSDictionary{});
  const ios::PropertyList* id = message.member("id");
  if (!id || !id->integer() || !message.text("command")) return close();
  const std::int64_t number = *id->integer();
  members->erase("id");
  if (*message.text("command") == "watch") {
    const std::string problem = watch(*members);
    return answer(number, problem.empty() ? ios::NSDictionary{} : ios::NSDictionary{{"problem", problem}});
  }
  LiveCommand command{id_, std::move(*members), {}};
  command.fromProgram = true;
  command.answer = [&core = core_, self = weak_from_this(), number](ios::NSDictionary answered) {
    asio::post(core.io_, [self, number, answered = std::move(answered)] {
      if (const auto connection = self.lock()) connection->answer(number, answered);
    });
  };
  core_.inbox_.put(std::move(command));
}

std::string Connection::watch(const ios::NSDictionary& members) {
  static const std::set<std::string> kTopics = {"console", "phone", "flow", "time"};
  const ios::PropertyList list(members);
  const ios::PropertyList* topics = list.member("topics");
  if (!topics || !topics->array()) return "expected topics";
  for (const ios::PropertyList& topic : *topics->array()) {
    if (!topic.text() || !kTopics.contains(*topic.text()))
      return "expected topics of console, phone, flow and time";
    watched_.insert(*topic.text());
    if (const auto newest = core_.topics_.find(*topic.text()); newest != core_.topics_.end())
      say(newest->second);
  }
  return {};
}

/// Bytes go behind the line.
void Connection::answer(std::int64_t id, ios::NSDictionary members) {
  members["answer"] = id;
  std::string bytes;
  if (const auto data = members.find("bytes"); data != members.end() && data->second.data()) {
    bytes.assign(data->second.data()->begin(), data->second.data()->end());
    data->second = static_cast<std::int64_t>(bytes.size());
  }
  say(jsonText(members) + "\n" + bytes);
}

void Connection::say(const std::string& text) {
  if (left_) return;
  queued_ += text.size();
  if (queued_ > kLongestQueue) return close();
  outgoing_.push_back(text);
  if (outgoing_.size() == 1) write();
}

void Connection::write() {
  asio::async_write(socket_, asio::buffer(outgoing_.front()),
                    [self = shared_from_this()](error_code error, std::size_t) {
                      if (error || self->left_) return self->close();
                      self->queued_ -= self->outgoing_.front().size();
                      self->outgoing_.pop_front();
                      if (!self->outgoing_.empty()) self->write();
                    });
}

void Connection::close() {
  if (std::exchange(left_, true)) return;
  error_code ignored;
  socket_.shutdown(stream::socket::shutdown_both, ignored);
  core_.connections_.erase(id_);
  core_.inbox_.put(LiveDeparture{id_});
}

}  // namespace

ControlCore::~ControlCore() {
  folder_.remove(options_.udid);
  if (!thread_.joinable()) return;
  asio::post(io_, [this] {
    acceptor_.close();
    for (const auto& [id, each] : std::map(connections_)) {
      if (const auto connection = each.lock()) connection->close();
    }
  });
  thread_.join();
}

void ControlCore::accept() {
  acceptor_.async_accept([this](error_code error, stream::socket socket) {
    if (error == asio::error::operation_aborted) return;
    if (!error && RunFolder::isOurs(socket.native_handle()) && connections_.size() < kMostConnections) {
      const auto connection = std::make_shared<Connection>(std::move(socket), *this, ++lastProgram_);
      connections_[lastProgram_] = connection;
      connection->say(jsonText(options_.greeting) + "\n");
      connection->read();
    }
    accept();
  });
}

void ControlCore::toWatchers(const std::string& topic, const std::string& text) {
  for (const auto& [id, each] : std::map(connections_)) {
    const auto connection = each.lock();
    if (connection && connection->watches(topic)) connection->say(text);
  }
}

ControlServer::ControlServer(Options options, CommandInbox& inbox)
    : core_(std::make_unique<ControlCore>(std::move(options), inbox)) {}

ControlServer::~ControlServer() = default;

void ControlServer::open() {
  core_->accept();
  core_->thread_ = std::thread([core = core_.get()] { core->io_.run(); });
}

void ControlServer::topic(const std::string& name, std::string text) {
  asio::post(core_->io_, [core = core_.get(), name, text = std::move(text) + "\n"] {
    core->topics_[name] = text;
    core->toWatchers(name, text);
  });
}

void ControlServer::consoleLines(std::vector<std::string> lines) {
  asio::post(core_->io_, [core = core_.get(), lines = std::move(lines)] {
    std::string text;
    for (const std::string& line : lines) text += (text.empty() ? "" : ",") + line;
    core->toWatchers("console", "{\"type\":\"console\",\"lines\":[" + text + "]}\n");
  });
}

}  // namespace simulator
