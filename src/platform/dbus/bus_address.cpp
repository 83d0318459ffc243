#include "platform/dbus/bus_address.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <optional>

namespace corvane {

namespace {

constexpr std::size_t kNameAtMost = sizeof(sockaddr_un::sun_path) - 1;  // the kernel's, without the zero

// Takes what stands before the next `mark` off the front of `text`, and the mark.
std::string_view takeUntil(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

// Addresses write bytes as %2f. Absent when one is torn.
std::optional<std::string> unescaped(std::string_view value) {
  std::string bytes;
  while (!value.empty()) {
    if (value.front() != '%') {
      bytes += value.front();
      value.remove_prefix(1);
      continue;
    }
    unsigned byte = 0;
    if (value.size() < 3) return std::nullopt;
    const auto read = std::from_chars(value.data() + 1, value.data() + 3, byte, 16);
    if (read.ec != std::errc() || read.ptr != value.data() + 3) return std::nullopt;
    bytes += static_cast<char>(byte);
    value.remove_prefix(3);
  }
  return bytes;
}

// The socket's name as the kernel takes it: abstract ones begin with a zero byte. Absent for what is no Unix socket.
std::optional<std::string> socketName(std::string_view entry) {
  if (takeUntil(entry, ':') != "unix") return std::nullopt;
  while (!entry.empty()) {
    auto value = takeUntil(entry, ',');
    const auto key = takeUntil(value, '=');
    if (key != "path" && key != "abstract") continue;
    auto name = unescaped(value);
    if (!name || name->empty()) return std::nullopt;
    if (key == "abstract") name->insert(name->begin(), '\0');
    if (name->size() > kNameAtMost) return std::nullopt;
    return name;
  }
  return std::nullopt;
}

class Socket {
 public:
  Socket() : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
  ~Socket() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  [[nodiscard]] Heard<void> connect(const std::string& name) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(static_cast<char*>(address.sun_path), kNameAtMost);
    // The length tells an abstract name's end; a path keeps its zero.
    const auto length = offsetof(sockaddr_un, sun_path) + name.size() + (name.front() == '\0' ? 0 : 1);
    if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length)) == 0)
      return {};
    const bool absent = errno == ENOENT || errno == ECONNREFUSED || errno == ENOTDIR;
    return std::unexpected(absent ? Silence::nobody : Silence::unreadable);
  }

  // Opens the conversation as every client does; whatever comes back, somebody is at home.
  [[nodiscard]] bool greets(std::chrono::microseconds limit) const {
    using std::chrono::steady_clock;
    constexpr std::string_view kGreeting("\0AUTH EXTERNAL\r\n", 16);
    if (::send(descriptor_, kGreeting.data(), kGreeting.size(), MSG_NOSIGNAL) < 0) return false;
    const auto end = steady_clock::now() + limit;
    int ready = 0;
    do {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
      pollfd waiting{.fd = descriptor_, .events = POLLIN, .revents = 0};
      ready = ::poll(&waiting, 1, std::max(0, static_cast<int>(left.count())));
    } while (ready < 0 && errno == EINTR);
    std::array<char, 1> byte{};
    return ready > 0 && ::recv(descriptor_, byte.data(), byte.size(), 0) == 1;
  }

 private:
  int descriptor_;
};

}  // namespace

Heard<std::string> answeringBus(std::string_view addresses, const BusDeadline& deadline) {
  while (!addresses.empty()) {
    const auto entry = takeUntil(addresses, ';');
    const auto name = socketName(entry);
    if (!name) continue;
    const Socket socket;
    if (const auto connected = socket.connect(*name); !connected) {
      if (connected.error() == Silence::nobody) continue;
      return std::unexpected(connected.error());
    }
    if (!socket.greets(deadline.nextCall())) return std::unexpected(Silence::unreadable);
    return std::string(entry);
  }
  return std::unexpected(Silence::nobody);
}

}  // namespace corvane
