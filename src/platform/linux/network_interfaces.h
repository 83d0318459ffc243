// Whether the machine is on a network at all, by its own interfaces.
#pragma once

struct sockaddr;

namespace corvane {

// Some interface other than the loopback one is up, has a carrier and an address by which others can be reached. Asks
// the kernel once.
[[nodiscard]] bool hasNetworkLink();

// Whether one address of one interface says so; `flags` as the kernel gives them.
[[nodiscard]] bool countsAsNetworkLink(unsigned flags, const sockaddr* address);

}  // namespace corvane
