#include "simulator/server/Routes.h"

#include <algorithm>
#include <map>

#include "simulator/server/ByteRange.h"
#include "simulator/server/PageFiles.h"

namespace simulator {
namespace {

// No more of a movie than this goes into one answer; players ask on.
constexpr std::uint64_t kLargestPart = 4 << 20;

std::string_view mediaType(std::string_view path) {
  static const std::map<std::string_view, std::string_view> types = {
      {"html", "text/html; charset=utf-8"},
      {"js", "text/javascript; charset=utf-8"},
      {"css", "text/css; charset=utf-8"},
      {"json", "application/json"},
      {"txt", "text/plain; charset=utf-8"},
      {"yaml", "text/plain; charset=utf-8"},
      {"svg", "image/svg+xml"},
      {"png", "image/png"},
      {"jpg", "image/jpeg"},
      {"woff2", "font/woff2"},
      {"mov", "video/quicktime"},
      {"MOV", "video/quicktime"},
  };
  const std::size_t dot = path.rfind('.');
  const auto known = dot == std::string_view::npos ? types.end() : types.find(path.substr(dot + 1));
  return known == types.end() ? "application/octet-stream" : known->second;
}

/// The path with its escapes decoded; empty if one is damaged.
std::optional<std::string> decoded(std::string_view text) {
  const auto digit = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    if (i + 2 >= text.size() || digit(text[i + 1]) < 0 || digit(text[i + 2]) < 0) return std::nullopt;
    result += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
    i += 2;
  }
  return result;
}

/// What follows `prefix`, if `text` begins with it.
std::optional<std::string_view> after(std::string_view text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return std::nullopt;
  return text.substr(prefix.size());
}

void addCommonHeaders(PageReply& reply) {
  reply.headers.emplace_back("Cache-Control", "no-store");
  reply.headers.emplace_back("X-Content-Type-Options", "nosniff");
  reply.headers.emplace_back("Referrer-Policy", "no-referrer");
  reply.headers.emplace_back("Cross-Origin-Opener-Policy", "same-origin");
}

}  // namespace

PageReply Routes::refusal(int status, const std::string& line) {
  PageReply reply;
  reply.status = status;
  reply.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
  if (status == 405) reply.headers.emplace_back("Allow", "GET, HEAD");
  addCommonHeaders(reply);
  reply.body = line + "\n";
  return reply;
}

PageReply Routes::answer(const PageRequest& request) const {
  if (!access_.isHost(request.host)) return refusal(403, "This is not the address that the phone printed.");
  if (!request.origin.empty() && request.origin != "null" && !access_.isOrigin(request.origin, request.host))
    return refusal(403, "Requests from other pages are not answered.");
  if (request.method != "GET" && request.method != "HEAD")
    return refusal(405, "Only GET and HEAD are answered.");

  const std::string_view target = request.target;
  const std::size_t question = std::min(target.find('?'), target.size());
  const auto path = decoded(target.substr(0, question));
  if (!path) return refusal(400, "The address has a damaged escape.");
  const std::string_view query = target.substr(std::min(question + 1, target.size()));

  if (*path == "/" && query.starts_with("token=")) return exchange(std::string(query.substr(6)));
  if (*path == "/favicon.ico") return refusal(404, "The phone has no icon.");
  if (const auto file = after(*path, "/files/")) return personsFile(std::string(*file), request);
  if (!access_.hasCookie(request.cookie))
    return refusal(403, "Open the address that the phone printed when it was started.");
  if (*path == "/") return pageFile("index.html");
  if (const auto name = after(*path, "/page/")) return pageFile(std::string(*name));
  return refusal(404, "There is nothing at this address.");
}

PageReply Routes::exchange(const std::string& token) const {
  if (!access_.isToken(token)) return refusal(403, "The token in this address is not this phone's.");
  PageReply reply;
  reply.status = 303;
  reply.headers.emplace_back("Location", "/#" + access_.secret());
  reply.headers.emplace_back("Set-Cookie", access_.setCookie());
  addCommonHeaders(reply);
  return reply;
}

PageReply Routes::pageFile(const std::string& name) const {
  const std::string_view content = pageFileNamed(name);
  if (content.empty()) return refusal(404, "The page has no such file.");
  PageReply reply;
  reply.headers.emplace_back("Content-Type", mediaType(name));
  reply.headers.emplace_back(
      "Content-Security-Policy",
      "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; media-src "
      "'self'; "
      "connect-src 'self'; frame-src 'self'; font-src 'self'; base-uri 'none'; form-action 'none'; "
      "frame-ancestors 'none'");
  addCommonHeaders(reply);
  reply.body = std::string(content);
  return reply;
}

PageReply Routes::personsFile(const std::string& path, const PageRequest& request) const {
  const std::size_t slash = path.find('/');
  if (slash == std::string::npos || !access_.isFileKey(path.substr(0, slash)))
    return refusal(403, "Files are given out by the page only.");
  const std::string_view rest = std::string_view(path).substr(slash + 1);

  PageReply reply;
  reply.headers.emplace_back("Content-Type", mediaType(path));
  reply.headers.emplace_back(
      "Content-Security-Policy",
      "sandbox; default-src 'none'; img-src 'self'; media-src 'self'; style-src 'unsafe-inline'");
  reply.headers.emplace_back("Accept-Ranges", "bytes");
  addCommonHeaders(reply);

  if (const auto name = after(rest, "kept/")) {
    auto content = kept_.find(*name);
    if (!content) return refusal(404, "This file is no longer kept.");
    reply.body = std::move(content);
    return reply;
  }
  std::optional<OpenFile> file;
  if (const auto name = after(rest, "inbox/")) file = openBeneath(roots_.inbox, std::string(*name));
  if (const auto name = after(rest, "movies/")) file = openBeneath(roots_.movies, std::string(*name));
  if (!file) return refusal(404, "There is no such file.");

  const std::uint64_t size = file->size;
  const RangeAnswer range = readRange(request.range, size);
  if (range.kind == RangeAnswer::Kind::unsatisfiable) {
    PageReply refused = refusal(416, "The file has no such bytes.");
    refused.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
    return refused;
  }
  ByteRange part{0, size};
  if (range.kind == RangeAnswer::Kind::part) {
    part = {range.range.first, std::min(range.range.count, kLargestPart)};
    reply.status = 206;
    reply.headers.emplace_back("Content-Range", "bytes " + std::to_string(part.first) + "-" +
                                                    std::to_string(part.first + part.count - 1) + "/" +
                                                    std::to_string(size));
  }
  reply.body = PageReply::FilePart{std::move(*file), part.first, part.count};
  return reply;
}

std::string Routes::refusalOfViewer(const PageRequest& request, const std::string& protocols) const {
  if (!access_.isHost(request.host)) return "This is not the address that the phone printed.";
  if (!access_.isOrigin(request.origin, request.host)) return "Other pages may not watch the phone.";
  if (request.target != "/socket") return "Viewers are met at /socket.";
  if (!access_.hasCookie(request.cookie)) return "The cookie is missing.";
  constexpr std::string_view kSecret = "secret.";
  std::string_view rest = protocols;
  bool spoken = false, secret = false;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    std::string_view word = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (word.starts_with(' ')) word.remove_prefix(1);
    while (word.ends_with(' ')) word.remove_suffix(1);
    if (word == kViewerProtocol) spoken = true;
    if (word.starts_with(kSecret) && access_.isSecret(word.substr(kSecret.size()))) secret = true;
  }
  if (!secret) return "The page's secret is missing.";
  return spoken ? "" : "The page speaks another protocol.";
}

}  // namespace simulator
