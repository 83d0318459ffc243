// sample_vendors: serves the vendors' pages of one sample Mac on the loopback address.
#include <fmt/format.h>
#include <signal.h>

#include <charconv>
#include <cstdio>
#include <string_view>

#include "sample/vendors/server.h"

namespace {

constexpr std::string_view kUsage = "Usage: sample_vendors DIR PORT [HOURS]\n";

bool readNumber(std::string_view text, int smallest, int largest, int& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value >= smallest && value <= largest;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kLongestHours = 24 * 7;
  int port = 0;
  int hours = 12;
  if (argc < 3 || argc > 4 || !readNumber(argv[2], 1, 65535, port) ||
      (argc == 4 && !readNumber(argv[3], 1, kLongestHours, hours))) {
    fmt::print(stderr, "{}", kUsage);
    return 2;
  }
  ::signal(SIGPIPE, SIG_IGN);
  auto server =
      corvane::sample::Server::create({.sample = argv[1], .port = port, .lifetime = std::chrono::hours(hours)});
  if (!server) {
    fmt::print(stderr, "sample_vendors: {}\n", server.error().text);
    return 1;
  }
  (*server)->run();
  return 0;
}
