#include "helper/helper_listener.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <uv.h>

#include <cerrno>
#include <cstring>

#include "base/atomic_file.h"
#include "platform/uv/socket_address.h"

namespace corvane {
namespace {

constexpr const char* kDomain = "CRVHelperListener";
constexpr int kBacklog = 128;

std::unexpected<Error> trouble(std::string_view doing, const std::filesystem::path& path, int errnoValue) {
  auto error = fileError(doing, path, errnoValue);
  error.domain = kDomain;
  return std::unexpected(std::move(error));
}

// A record lock: it is this process's alone. A lock on the open file would pass to every child, and one that a
// killed helper has forked but that has not come to its exec would keep the next helper out.
Result<int> lockBeside(const std::filesystem::path& socket) {
  const auto path = socket.parent_path() / "helper.lock";
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd < 0) return trouble("opening", path, errno);
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  if (fcntl(fd, F_SETLK, &whole) == 0) return fd;
  const int reason = errno;
  close(fd);
  if (reason == EAGAIN || reason == EACCES)
    return failure(kDomain, EALREADY, fmt::format("another helper serves {}", socket.parent_path().string()));
  return trouble("locking", path, reason);
}

// A socket that is bound and connectable for all, as a descriptor.
Result<int> boundSocket(const std::filesystem::path& path) {
  const auto address = SocketAddress::of(path);
  if (!address) return std::unexpected(address.error());
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return trouble("making", path, errno);
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  std::memcpy(name.sun_path, address->text().c_str(), std::min(address->text().size(), sizeof name.sun_path - 1));
  const bool bound = bind(fd, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
  if (bound && chmod(path.c_str(), 0666) == 0) return fd;
  const int reason = errno;
  close(fd);
  return trouble("binding", path, reason);
}

Error notPermitted() {
  return helperError(HelperErrorCode::notPermitted, "only root and the console user may ask this helper");
}

}  // namespace

struct HelperListener::Socket {
  uv_pipe_t pipe{};
};

HelperListener::HelperListener(Services services, Rules rules)
    : s_(services), rules_(std::move(rules)), log_(services.log, "HelperListener") {}

Result<std::unique_ptr<HelperListener>> HelperListener::open(Services services, Rules rules) {
  std::error_code error;
  std::filesystem::create_directories(rules.socket.parent_path(), error);
  if (error) return trouble("making", rules.socket.parent_path(), error.value());
  auto lock = lockBeside(rules.socket);
  if (!lock) return std::unexpected(lock.error());
  auto listener = std::unique_ptr<HelperListener>(new HelperListener(services, std::move(rules)));
  listener->lock_ = *lock;
  if (auto bound = listener->bind(); !bound) return std::unexpected(bound.error());
  return listener;
}

Status HelperListener::bind() {
  if (unlink(rules_.socket.c_str()) != 0 && errno != ENOENT) return trouble("removing", rules_.socket, errno);
  const auto fd = boundSocket(rules_.socket);
  if (!fd) return std::unexpected(fd.error());
  auto socket = std::make_unique<Socket>();
  if (const int code = uv_pipe_init(s_.loop, &socket->pipe, 0); code != 0) {
    close(*fd);
    return trouble("making", rules_.socket, -code);
  }
  socket_ = std::move(socket);
  socket_->pipe.data = this;
  auto* stream = reinterpret_cast<uv_stream_t*>(&socket_->pipe);
  int code = uv_pipe_open(&socket_->pipe, *fd);
  if (code != 0) close(*fd);
  if (code == 0) {
    code = uv_listen(stream, kBacklog, [](uv_stream_t* listening, int status) {
      if (status == 0) static_cast<HelperListener*>(listening->data)->greet();
    });
  }
  if (code != 0) return trouble("listening on", rules_.socket, -code);
  return {};
}

void HelperListener::greet() {
  const auto peer =
      HelperConnection::accept(s_.loop, reinterpret_cast<uv_stream_t*>(&socket_->pipe), rules_.peerIdleLimit,
                               [this](const std::shared_ptr<HelperConnection>& gone) { left(gone); });
  if (!peer) return;
  const auto uid = peer->peerUid();
  if (!uid || !rules_.mayAsk(*uid)) {
    tellRefused(uid);
    peer->turnAway(notPermitted());
  } else if (peers_.size() >= kPeersLimit) {
    peer->turnAway(helperError(HelperErrorCode::tooManyPeers,
                               fmt::format("{} connections are open, no more are taken", kPeersLimit)));
  } else {
    peers_.insert(peer);
    serve(peer, *uid);
  }
}

// Whoever was the console user when they connected may have logged out since.
void HelperListener::serve(const std::shared_ptr<HelperConnection>& peer, uid_t uid) {
  peer->serve([this, uid, weak = std::weak_ptr(peer)](HelperRequest request, Completion<std::string> answer) {
    if (rules_.mayAsk(uid)) return rules_.handler(std::move(request), std::move(answer));
    tellRefused(uid);
    answer(composeRefusal(request.id, notPermitted()));
    if (const auto gone = weak.lock()) gone->closeWhenAnswered();
  });
}

void HelperListener::tellRefused(std::optional<uid_t> uid) {
  const auto now = s_.clock.steadyNow();
  std::erase_if(refusedAt_, [now](const auto& told) { return now - told.second >= kRefusalLogInterval; });
  if (!refusedAt_.emplace(uid, now).second) return;
  log_.warning(fmt::format("Refused a peer of user {}.", uid ? std::to_string(*uid) : "<unknown>"));
}

void HelperListener::left(const std::shared_ptr<HelperConnection>& peer) {
  peers_.erase(peer);
  if (peers_.empty()) tellDrained();
}

void HelperListener::tellDrained() {
  if (drained_) s_.main.post(std::exchange(drained_, nullptr));
}

void HelperListener::stop(Task drained) {
  drained_ = std::move(drained);
  if (socket_) {
    unlink(rules_.socket.c_str());
    auto* handle = reinterpret_cast<uv_handle_t*>(&socket_->pipe);
    handle->data = socket_.release();
    uv_close(handle, [](uv_handle_t* closed) { delete static_cast<Socket*>(closed->data); });
  }
  for (const auto& peer : std::set(peers_)) peer->closeWhenAnswered();
  if (peers_.empty()) tellDrained();
}

HelperListener::~HelperListener() {
  stop(nullptr);
  for (const auto& peer : std::set(peers_)) peer->closeNow();
  if (lock_ >= 0) close(lock_);
}

}  // namespace corvane
