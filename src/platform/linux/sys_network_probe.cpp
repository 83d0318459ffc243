#include "platform/linux/sys_network_probe.h"

#include <fstream>
#include <string>
#include <system_error>

namespace corvane {

namespace {

constexpr const char* kLoopback = "772";

std::string firstLine(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

bool hasLink(const std::filesystem::path& interface) {
  if (firstLine(interface / "type") == kLoopback) return false;
  const auto state = firstLine(interface / "operstate");
  return state == "up" || (state == "unknown" && firstLine(interface / "carrier") == "1");
}

bool anyLink(const std::filesystem::path& interfaces) {
  std::error_code problem;
  std::filesystem::directory_iterator entries(interfaces, problem);
  if (problem) return true;
  for (const auto& entry : entries)
    if (hasLink(entry.path())) return true;
  return false;
}

}  // namespace

void SysNetworkProbe::probe(Completion<NetworkState> done) {
  main_.post(
      [done = std::move(done), state = NetworkState{.hasLink = anyLink(interfaces_)}]() mutable { done(state); });
}

}  // namespace corvane
