#include "simulator/server/Private/Viewer.h"

#include "simulator/live/Json.h"

namespace simulator {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kLongestMessage = 64 << 10, kLongestQueue = 8 << 20;
constexpr PixelRect kEverything{0, 0, INT16_MAX, INT16_MAX};

}  // namespace

Viewer::Viewer(beast::tcp_stream stream, ServerCore& core, ViewerId id)
    : socket_(std::move(stream)), core_(core), id_(id), rest_(core.io_) {}

void Viewer::start(const http::request<http::string_body>& request) {
  socket_.set_option(websocket::stream_base::timeout{seconds(10), seconds(60), true});
  socket_.set_option(websocket::stream_base::decorator([](websocket::response_type& response) {
    response.set(http::field::sec_websocket_protocol, std::string(kViewerProtocol));
  }));
  socket_.read_message_max(kLongestMessage);
  socket_.auto_fragment(false);
  // The connection itself may take seconds to end; who says goodbye has taken the fingers off already.
  socket_.control_callback([this](websocket::frame_type kind, beast::string_view) {
    if (kind == websocket::frame_type::close) core_.inbox_.put(LiveDeparture{id_});
  });
  socket_.async_accept(request, [self = shared_from_this()](error_code error) {
    if (error) return self->leave();
    for (const auto& [topic, message] : self->core_.announcements_.all()) self->say(topic, message);
    self->changed(kEverything);
    self->read();
  });
}

void Viewer::read() {
  socket_.async_read(incoming_, [self = shared_from_this()](error_code error, std::size_t) {
    if (error == websocket::error::message_too_big || error == websocket::error::buffer_overflow)
      return self->close(websocket::close_code::too_big, "The message is too long.");
    if (error) return self->leave();
    const std::string message = beast::buffers_to_string(self->incoming_.data());
    self->incoming_.consume(self->incoming_.size());
    if (!self->messages_.allows(steady_clock::now())) {
      self->close(websocket::close_code::policy_error, "Too many messages.");
    } else if (!self->socket_.got_text()) {
      self->close(websocket::close_code::policy_error, "Messages are texts.");
    } else {
      self->received(message);
    }
    self->read();
  });
}

void Viewer::received(const std::string& message) {
  auto read = readViewerMessage(message);
  if (!read)
    return close(websocket::close_code::policy_error, "The message is neither touches, shown nor a command.");
  if (auto* touches = std::get_if<TouchMessage>(&*read)) {
    core_.inbox_.put(LiveTouches{id_, touches->number, std::move(touches->samples)});
  } else if (const auto* shown = std::get_if<ShownMessage>(&*read)) {
    if (!pictures_.shown(shown->sequence))
      return close(websocket::close_code::policy_error, "No picture had this number.");
    look();
  } else {
    obey(std::move(std::get<CommandMessage>(*read)));
  }
}

void Viewer::obey(CommandMessage command) {
  const std::string name = *ios::PropertyList(command.members).text("command");
  if (name == "view" || name == "watch") {
    const std::string problem = name == "view" ? setView(command.members) : setWatch(command.members);
    return answer(command.id,
                  problem.empty() ? ios::NSDictionary{} : ios::NSDictionary{{"problem", problem}});
  }
  core_.inbox_.put(LiveCommand{id_, std::move(command.members),
                               [&core = core_, viewer = id_, id = command.id](ios::NSDictionary members) {
                                 core.post([&core, viewer, id, members = std::move(members)] {
                                   if (Viewer* asker = core.viewer(viewer)) asker->answer(id, members);
                                 });
                               }});
}

void Viewer::answer(std::int64_t id, ios::NSDictionary members) {
  members["answer"] = id;
  say("", jsonText(members));
}

std::string Viewer::setView(const ios::NSDictionary& members) {
  const ios::PropertyList list(members);
  const bool* hidden = list.member("hidden") ? list.member("hidden")->boolean() : nullptr;
  hidden_ = hidden && *hidden;
  if (hidden_) return {};
  const auto width = numberIn(list.member("width")), height = numberIn(list.member("height"));
  if (!width || !height || !(*width >= 16 && *width <= 16384) || !(*height >= 16 && *height <= 16384))
    return "expected a width and a height of 16 to 16384";
  roomWidth_ = static_cast<int>(*width);
  roomHeight_ = static_cast<int>(*height);
  changed(kEverything);
  return {};
}

std::string Viewer::setWatch(const ios::NSDictionary& members) {
  const ios::PropertyList list(members);
  const ios::PropertyList* topics = list.member("topics");
  if (!topics || !topics->array()) return "expected topics";
  std::set<std::string> wanted;
  for (const ios::PropertyList& topic : *topics->array()) {
    if (!topic.text() || (*topic.text() != "elements" && *topic.text() != "tree"))
      return "expected topics of elements and tree";
    wanted.insert(*topic.text());
  }
  watched_ = wanted;
  core_.inbox_.put(LiveWatch{id_, std::move(wanted)});
  return {};
}

void Viewer::applied(std::uint32_t touch, bool visible) {
  touch_ = touch;
  if (!visible) say("", "{\"type\":\"touched\",\"touch\":" + std::to_string(touch) + "}");
}

void Viewer::changed(const PixelRect& rect) {
  pictures_.changed(rect, steady_clock::now());
  look();
}

/// Begins the next picture if there is one to make now, or comes back when there may be.
void Viewer::look() {
  if (left_ || goodbye_ || hidden_) return;
  const auto task = pictures_.next(steady_clock::now());
  if (!task) {
    if (const auto due = pictures_.due(); due && rest_.expiry() != *due) {
      rest_.expires_at(*due);
      rest_.async_wait([self = weak_from_this()](error_code error) {
        if (const auto viewer = self.lock(); viewer && !error) viewer->look();
      });
    }
    return;
  }
  stamp_ = {stamp_.sequence + 1, touch_, core_.phoneTime_};
  core_.encode(shared_from_this(),
               {task->rect, task->exact, roomWidth_, roomHeight_, known_, knownWidth_, knownHeight_});
}

void Viewer::encoded(const Picture& picture) {
  if (picture.image.empty()) {
    pictures_.finished();
  } else {
    known_ = picture.shape;
    knownWidth_ = picture.width;
    knownHeight_ = picture.height;
    pictures_.sent(stamp_.sequence);
    queue({"", true, std::make_shared<const std::string>(pictureMessage(picture, stamp_))});
  }
  look();
}

void Viewer::say(const std::string& topic, const std::string& message) {
  queue({topic, false, std::make_shared<const std::string>(message)});
}

void Viewer::queue(Outgoing message) {
  if (left_ || goodbye_) return;
  if (!message.topic.empty()) {
    for (std::size_t i = writing_ ? 1 : 0; i < outgoing_.size(); ++i) {
      if (outgoing_[i].topic != message.topic) continue;
      queued_ += message.bytes->size() - outgoing_[i].bytes->size();
      outgoing_[i] = std::move(message);
      return;
    }
  }
  queued_ += message.bytes->size();
  outgoing_.push_back(std::move(message));
  // Whoever does not read for so long begins anew, with what is true then.
  if (queued_ > kLongestQueue) return close(websocket::close_code::try_again_later, "Too slow to follow.");
  if (!writing_) write();
}

void Viewer::write() {
  writing_ = true;
  socket_.binary(outgoing_.front().binary);
  socket_.async_write(
      asio::buffer(*outgoing_.front().bytes),
      [self = shared_from_this(), bytes = outgoing_.front().bytes](error_code error, std::size_t) {
        self->writing_ = false;
        if (error) return self->leave();
        if (!self->outgoing_.empty()) {
          self->queued_ -= self->outgoing_.front().bytes->size();
          self->outgoing_.pop_front();
        }
        if (self->goodbye_) return self->finish();
        if (!self->outgoing_.empty()) self->write();
      });
}

void Viewer::close(websocket::close_code code, const std::string& reason) {
  if (left_ || goodbye_) return;
  goodbye_.emplace(code, reason);
  if (!writing_) return finish();
  // A write to somebody who does not read would hold the goodbye up for ever.
  beast::get_lowest_layer(socket_).expires_after(seconds(2));
}

void Viewer::finish() {
  socket_.async_close(*goodbye_, [self = shared_from_this()](error_code) { self->leave(); });
}

void Viewer::leave() {
  if (std::exchange(left_, true)) return;
  rest_.cancel();
  outgoing_.clear();
  core_.dismiss(id_);
}

}  // namespace simulator
