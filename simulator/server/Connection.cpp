#include "simulator/server/Private/Connection.h"

#include "simulator/server/Private/Viewer.h"

namespace simulator {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kMostViewers = 128;
constexpr std::uint32_t kLongestHeader = 8 << 10;
constexpr std::uint64_t kLongestBody = 1 << 10;
constexpr seconds kPatience{20};

std::string text(beast::string_view view) {
  return {view.data(), view.size()};
}

}  // namespace

Connection::Connection(tcp::socket socket, ServerCore& core)
    : stream_(std::move(socket)), core_(core), buffer_(kLongestHeader + kLongestBody) {
  ++core_.connections_;
}

Connection::~Connection() {
  --core_.connections_;
}

void Connection::read() {
  parser_.emplace();
  parser_->header_limit(kLongestHeader);
  parser_->body_limit(kLongestBody);
  stream_.expires_after(kPatience);
  http::async_read(stream_, buffer_, *parser_, [self = shared_from_this()](error_code error, std::size_t) {
    if (!error) return self->received();
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
      return self->refuse(431, "The request's header is too long.");
    if (error == http::error::body_limit) return self->refuse(413, "The request's body is too long.");
    if (error.category() == make_error_code(http::error::bad_method).category() &&
        error != http::error::end_of_stream && error != http::error::partial_message)
      return self->refuse(400, "The request is malformed.");
  });
}

void Connection::refuse(int status, const std::string& line) {
  keepAlive_ = false;
  head_ = false;
  reply(Routes::refusal(status, line));
}

void Connection::received() {
  const auto& request = parser_->get();
  PageRequest asked{text(request.method_string()),      text(request.target()),
                    text(request[http::field::host]),   text(request[http::field::origin]),
                    text(request[http::field::cookie]), text(request[http::field::range])};
  if (!core_.requests_.allows(steady_clock::now())) return refuse(429, "Too many requests.");
  if (websocket::is_upgrade(request)) return becomeViewer(asked);
  keepAlive_ = request.keep_alive();
  head_ = request.method() == http::verb::head;
  reply(core_.routes_->answer(asked));
}

void Connection::becomeViewer(const PageRequest& asked) {
  const auto& request = parser_->get();
  const std::string problem =
      core_.routes_->refusalOfViewer(asked, text(request[http::field::sec_websocket_protocol]));
  if (!problem.empty()) return refuse(403, problem);
  if (core_.viewers_.size() >= kMostViewers) return refuse(503, "Too many viewers.");
  stream_.expires_never();
  const auto viewer = std::make_shared<Viewer>(std::move(stream_), core_, ++core_.lastViewer_);
  core_.admit(viewer);
  viewer->start(request);
}

void Connection::reply(PageReply reply) {
  const auto dressed = [&](auto response) {
    response.result(static_cast<unsigned>(reply.status));
    for (const auto& [name, value] : reply.headers) response.insert(name, value);
    response.version(11);
    response.keep_alive(keepAlive_);
    return response;
  };
  std::string body;
  if (auto* part = std::get_if<PageReply::FilePart>(&reply.body)) {
    if (reply.status == 200 && !head_) {
      // A whole file goes out as it is read.
      auto response = dressed(http::response<http::file_body>{});
      beast::file_posix file;
      file.native_handle(std::exchange(part->file.descriptor, -1));
      error_code error;
      response.body().reset(std::move(file), error);
      if (error) return refuse(500, "The file could not be read.");
      response.content_length(part->count);
      return send(std::move(response));
    }
    if (head_) {
      auto response = dressed(http::response<http::empty_body>{});
      response.content_length(part->count);
      return send(std::move(response));
    }
    body = part->file.read(part->first, part->count);
    if (body.size() != part->count) return refuse(500, "The file became shorter while it was read.");
  } else if (auto* kept = std::get_if<KeptFiles::Content>(&reply.body)) {
    body = **kept;
  } else {
    body = std::move(std::get<std::string>(reply.body));
  }
  if (head_) {
    auto response = dressed(http::response<http::empty_body>{});
    response.content_length(body.size());
    return send(std::move(response));
  }
  auto response = dressed(http::response<http::string_body>{});
  response.body() = std::move(body);
  response.prepare_payload();
  send(std::move(response));
}

template <class Body>
void Connection::send(http::response<Body> made) {
  const auto response = std::make_shared<http::response<Body>>(std::move(made));
  const auto serializer = std::make_shared<http::response_serializer<Body>>(*response);
  stream_.expires_after(kPatience);
  http::async_write(stream_, *serializer,
                    [self = shared_from_this(), response, serializer](error_code error, std::size_t) {
                      if (!error && self->keepAlive_) return self->read();
                      error_code ignored;
                      self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
                    });
}

}  // namespace simulator
