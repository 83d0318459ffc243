// The network as the kernel tells of it.
#pragma once

#include "base/main_queue.h"
#include "platform/network_probe.h"

namespace corvane {

// There is a link when hasNetworkLink() says so. Whether a portal stands between cannot be told. Answers in the next
// turn.
class SysNetworkProbe final : public NetworkProbe {
 public:
  explicit SysNetworkProbe(MainQueue& main) : main_(main) {}
  void probe(Completion<NetworkState> done) override;

 private:
  MainQueue& main_;
};

}  // namespace corvane
