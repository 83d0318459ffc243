// As much of HTTP/1.1 as version pages and downloads need: one request a connection, no bodies.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::sample {

// A head above this is refused.
inline constexpr std::size_t kRequestLimit = 16 * 1024;

struct HttpRequest {
  std::string path;  // decoded, without the leading slash and the query; never leads out of the folder
  bool headOnly = false;
};

// Absent for anything but GET or HEAD of a decent path. `head` ends with the empty line.
[[nodiscard]] std::optional<HttpRequest> parseRequest(std::string_view head);

struct HttpReply {
  int status = 200;
  std::string contentType = "text/plain; charset=utf-8";
  std::string location;
  std::string body;
};

[[nodiscard]] std::string replyBytes(const HttpReply& reply, bool headOnly);

}  // namespace corvane::sample
