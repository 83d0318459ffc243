#include "platform/linux/network_interfaces.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <memory>

namespace corvane {

namespace {

constexpr in_addr_t kSelfMade = 0xA9FE0000;  // 169.254/16: what a machine gives itself when nobody gives it one
constexpr in_addr_t kSelfMadeMask = 0xFFFF0000;

}  // namespace

bool countsAsNetworkLink(unsigned flags, const sockaddr* address) {
  if (address == nullptr || (flags & IFF_UP) == 0 || (flags & IFF_RUNNING) == 0 || (flags & IFF_LOOPBACK) != 0)
    return false;
  if (address->sa_family == AF_INET) {
    const auto number = ntohl(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr);
    return number != INADDR_ANY && (number & kSelfMadeMask) != kSelfMade;
  }
  if (address->sa_family != AF_INET6) return false;
  const auto* number = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
  return !IN6_IS_ADDR_LINKLOCAL(number) && !IN6_IS_ADDR_LOOPBACK(number);
}

bool hasNetworkLink() {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) return false;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, &::freeifaddrs);
  for (const auto* one = first; one != nullptr; one = one->ifa_next)
    if (countsAsNetworkLink(one->ifa_flags, one->ifa_addr)) return true;
  return false;
}

}  // namespace corvane
