#include "platform/linux/sys_network_probe.h"

#include <utility>

#include "platform/linux/network_interfaces.h"

namespace corvane {

void SysNetworkProbe::probe(Completion<NetworkState> done) {
  main_.post([done = std::move(done), hasLink = hasNetworkLink()]() mutable { done({.hasLink = hasLink}); });
}

}  // namespace corvane
