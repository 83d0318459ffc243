#include "sample/vendors/http_request.h"

#include <fmt/format.h>

#include <charconv>

namespace corvane::sample {

namespace {

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded.push_back(text[i]);
      continue;
    }
    unsigned value = 0;
    const auto digits = text.substr(i + 1, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2 || value == 0) return std::nullopt;
    decoded.push_back(static_cast<char>(value));
    i += 2;
  }
  return decoded;
}

// No component may begin with a dot: neither "..", nor the folders that hold the orders to the server.
bool isDecent(std::string_view path) { return !path.starts_with('.') && !path.contains("/."); }

std::string_view phrase(int status) {
  switch (status) {
    case 200:
      return "OK";
    case 302:
      return "Found";
    case 400:
      return "Bad Request";
    case 404:
      return "Not Found";
    case 503:
      return "Service Unavailable";
    default:
      return "Ordered";
  }
}

}  // namespace

std::optional<HttpRequest> parseRequest(std::string_view head) {
  const auto line = head.substr(0, head.find("\r\n"));
  const auto target = line.find(' ');
  const auto version = line.rfind(' ');
  if (target == version || !line.substr(version + 1).starts_with("HTTP/1.")) return std::nullopt;
  const auto method = line.substr(0, target);
  auto path = line.substr(target + 1, version - target - 1);
  if ((method != "GET" && method != "HEAD") || !path.starts_with('/')) return std::nullopt;
  path.remove_prefix(1);
  auto decoded = percentDecoded(path.substr(0, path.find('?')));
  if (!decoded || !isDecent(*decoded)) return std::nullopt;
  return HttpRequest{.path = *std::move(decoded), .headOnly = method == "HEAD"};
}

std::string replyBytes(const HttpReply& reply, bool headOnly) {
  auto bytes = fmt::format("HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n",
                           reply.status, phrase(reply.status), reply.contentType, reply.body.size());
  if (!reply.location.empty()) bytes += fmt::format("Location: {}\r\n", reply.location);
  bytes += "\r\n";
  return headOnly ? bytes : bytes + reply.body;
}

}  // namespace corvane::sample
