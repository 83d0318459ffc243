// What an address says, as far as it decides where a request may go.
#pragma once

#include <optional>
#include <string>

#include "platform/net/curl_library.h"

namespace corvane {

struct WebAddress {
  std::string scheme;  // "http" or "https"
  std::string host;
  std::string port;

  // Absent for what is no address of a web server.
  [[nodiscard]] static std::optional<WebAddress> of(const CurlLibrary& curl, const std::string& text);

  // Who may see what was meant for the other.
  friend bool operator==(const WebAddress&, const WebAddress&) = default;
};

}  // namespace corvane
