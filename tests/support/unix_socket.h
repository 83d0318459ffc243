// Sockets of tests that play a peer themselves.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

namespace corvane::testing {

// A new socket that `attach`, which is ::bind or ::connect, has put to `path`; -1 where that fails.
template <class Attach>
int unixSocket(const std::string& path, const Attach& attach, int flags = 0) {
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (attach(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return descriptor;
  ::close(descriptor);
  return -1;
}

}  // namespace corvane::testing
