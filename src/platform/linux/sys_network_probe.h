// The network interfaces as the kernel tells of them.
#pragma once

#include <filesystem>

#include "base/main_queue.h"
#include "platform/network_probe.h"

namespace corvane {

// There is a link when an interface that is no loopback is up, or does not tell and has a carrier; also where the
// interfaces cannot be listed. Whether a portal stands between cannot be told. Answers in the next turn.
class SysNetworkProbe final : public NetworkProbe {
 public:
  explicit SysNetworkProbe(MainQueue& main, std::filesystem::path interfaces = "/sys/class/net")
      : main_(main), interfaces_(std::move(interfaces)) {}
  void probe(Completion<NetworkState> done) override;

 private:
  MainQueue& main_;
  std::filesystem::path interfaces_;
};

}  // namespace corvane
