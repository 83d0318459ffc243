#include "platform/uv/socket_address.h"

#include <fcntl.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/atomic_file.h"

namespace corvane {

namespace {

constexpr std::size_t kAddressLimit = sizeof(sockaddr_un::sun_path) - 1;  // the kernel's, without the zero

}  // namespace

Result<SocketAddress> SocketAddress::of(const std::filesystem::path& path) {
  if (path.native().size() <= kAddressLimit) return SocketAddress(path.native(), -1);
  const int folder = ::open(path.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return std::unexpected(fileError("opening the folder of the socket", path, errno));
  SocketAddress address("/proc/self/fd/" + std::to_string(folder) + "/" + path.filename().native(), folder);
  if (address.text_.size() > kAddressLimit) return std::unexpected(fileError("naming the socket", path, ENAMETOOLONG));
  return address;
}

SocketAddress::SocketAddress(SocketAddress&& other) noexcept
    : text_(std::move(other.text_)), folder_(std::exchange(other.folder_, -1)) {}

SocketAddress::~SocketAddress() {
  if (folder_ >= 0) ::close(folder_);
}

}  // namespace corvane
