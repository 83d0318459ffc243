#include "platform/posix/socket_peer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace corvane {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  [[nodiscard]] int get() const { return number_; }

 private:
  int number_;
};

bool connectTo(int socket, const std::string& path) {
  sockaddr_un address{};
  if (path.size() >= sizeof address.sun_path) return false;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

std::optional<pid_t> listeningProcess(const std::filesystem::path& socket) {
  const Descriptor folder(::open(socket.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  const Descriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (folder.get() < 0 || connection.get() < 0) return std::nullopt;
  const auto name = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + socket.filename().string();
  if (!connectTo(connection.get(), name)) return std::nullopt;
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  return peer.uid == ::geteuid() && peer.pid > 1 ? std::optional(peer.pid) : std::nullopt;
}

}  // namespace corvane
