// Which web addresses are safe to send anything to, or to believe. Pure.
#pragma once

#include <algorithm>
#include <string_view>

namespace corvane {

// https, or plain http to this very machine with a port: nothing else tells of a machine, or is believed, on its way.
[[nodiscard]] constexpr bool isSafeAddress(std::string_view url) {
  constexpr std::string_view loopback = "http://127.0.0.1:";
  if (url.starts_with("https://")) return url.size() > 8;
  if (!url.starts_with(loopback)) return false;
  const auto port = url.substr(loopback.size(), url.substr(loopback.size()).find('/'));
  return !port.empty() && std::ranges::all_of(port, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace corvane
