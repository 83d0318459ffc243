#include "helper/helper_connection.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <uv.h>

#include <array>

namespace corvane {

struct HelperConnection::Handles {
  uv_pipe_t pipe{};
  uv_timer_t idle{};  // libuv's own: armed several times a request, and that must cost no turn of the queue
  int open = 2;
  std::array<char, 64U << 10U> buffer;

  [[nodiscard]] uv_stream_t* stream() { return reinterpret_cast<uv_stream_t*>(&pipe); }
  [[nodiscard]] uv_handle_t* handle() { return reinterpret_cast<uv_handle_t*>(&pipe); }
  [[nodiscard]] uv_handle_t* idleHandle() { return reinterpret_cast<uv_handle_t*>(&idle); }
};

namespace {

struct Write {
  uv_write_t request{};
  std::string frame;
  std::shared_ptr<HelperConnection> connection;
};

}  // namespace

HelperConnection::HelperConnection(Duration idleLimit, Closed closed)
    : idleLimit_(idleLimit),
      closed_(std::move(closed)),
      decoder_(kRequestFrameLimit),
      handles_(std::make_unique_for_overwrite<Handles>()) {}  // the buffer needs no zeros

HelperConnection::~HelperConnection() = default;

std::shared_ptr<HelperConnection> HelperConnection::accept(uv_loop_s* loop, uv_stream_s* listening, Duration idleLimit,
                                                           Closed closed) {
  auto connection = std::shared_ptr<HelperConnection>(new HelperConnection(idleLimit, std::move(closed)));
  if (uv_pipe_init(loop, &connection->handles_->pipe, 0) != 0) return nullptr;
  uv_timer_init(loop, &connection->handles_->idle);
  connection->keepAlive_ = connection;
  connection->handles_->pipe.data = connection->handles_->idle.data = connection.get();
  if (uv_accept(listening, connection->handles_->stream()) != 0) {
    connection->closeNow();
    return nullptr;
  }
  return connection;
}

std::optional<uid_t> HelperConnection::peerUid() const {
  uv_os_fd_t fd = -1;
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (uv_fileno(handles_->handle(), &fd) != 0) return std::nullopt;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return std::nullopt;
  return credentials.uid;
}

void HelperConnection::serve(Handler handler) {
  handler_ = std::move(handler);
  startReading();
  restartIdleLimit();
}

void HelperConnection::startReading() {
  const auto give = [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
    auto& self = *static_cast<HelperConnection*>(handle->data);
    *buffer = uv_buf_init(self.handles_->buffer.data(), static_cast<unsigned>(self.handles_->buffer.size()));
  };
  const auto take = [](uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
    const auto self = static_cast<HelperConnection*>(stream->data)->shared_from_this();
    if (count > 0) self->took({buffer->base, static_cast<std::size_t>(count)});
    if (count < 0) self->ended();
  };
  if (std::exchange(reading_, true)) return;
  reading_ = uv_read_start(handles_->stream(), give, take) == 0;
  if (!reading_) closeNow();
}

void HelperConnection::took(std::string_view bytes) {
  if (decoder_.feed(bytes)) return takeRequests();
  refuse({}, helperError(HelperErrorCode::tooLarge,
                         fmt::format("a request may have {} bytes at most", kRequestFrameLimit)));
}

void HelperConnection::takeRequests() {
  const auto mayTake = [this] { return !last_ && unwritten_ < kUntakenAnswersLimit; };
  while (mayTake()) {
    const auto body = decoder_.next();
    if (!body) return startReading();
    takeRequest(*body);
  }
  stopReading();
}

void HelperConnection::takeRequest(const std::string& body) {
  auto request = parseRequest(body);
  if (!request) return refuse(request.error().id, request.error().error);
  if (unanswered_ == kPeerRequestsLimit)
    return refuse(request->id, helperError(HelperErrorCode::busy,
                                           fmt::format("{} requests of this connection wait", kPeerRequestsLimit)));
  ++unanswered_;
  if (unwritten_ == 0) uv_timer_stop(&handles_->idle);
  auto id = request->id;
  handler_(std::move(*request), [weak = weak_from_this(), id = std::move(id)](std::string answer) {
    if (const auto self = weak.lock()) self->answer(id, std::move(answer));
  });
}

void HelperConnection::ended() {
  stopReading();
  if (decoder_.insideFrame() && !last_)
    return refuse({}, helperError(HelperErrorCode::malformed, "the connection ended inside a request"));
  closeWhenAnswered();
}

void HelperConnection::answer(std::string_view id, std::string body) {
  --unanswered_;
  if (refused_) return;
  if (body.size() > kAnswerFrameLimit)
    body = composeRefusal(id, helperError(HelperErrorCode::tooLarge, "the answer is larger than a frame may be"));
  write(body);
}

void HelperConnection::turnAway(const Error& error) {
  auto frame = encodeFrame(composeRefusal({}, error));
  const auto buffer = uv_buf_init(frame.data(), static_cast<unsigned>(frame.size()));
  uv_try_write(handles_->stream(), &buffer, 1);  // nothing was written before, so there is room
  closeNow();
}

void HelperConnection::refuse(std::string_view id, const Error& error) {
  stopReading();
  last_ = refused_ = true;
  write(composeRefusal(id, error));
}

void HelperConnection::write(const std::string& body) {
  if (uv_is_closing(handles_->handle())) return;
  auto* write = new Write{.request = {}, .frame = encodeFrame(body), .connection = shared_from_this()};
  write->request.data = write;
  if (++unwritten_ == 1) restartIdleLimit();
  const auto buffer = uv_buf_init(write->frame.data(), static_cast<unsigned>(write->frame.size()));
  const auto done = [](uv_write_t* request, int status) {
    const std::unique_ptr<Write> finished(static_cast<Write*>(request->data));
    finished->connection->written(status == 0);
  };
  if (uv_write(&write->request, handles_->stream(), &buffer, 1, done) != 0) {
    delete write;
    --unwritten_;
    closeNow();
  }
}

void HelperConnection::written(bool ok) {
  --unwritten_;
  if (!ok) return closeNow();
  closeIfDone();
  restartIdleLimit();
  if (!last_) takeRequests();
}

void HelperConnection::stopReading() {
  if (std::exchange(reading_, false)) uv_read_stop(handles_->stream());
}

// While a run of hours is awaited nobody is idle; once nothing is, or an answer is not taken, the limit counts. Called
// when an answer becomes the oldest that is not taken, never for one behind it, or a peer that only asks would put the
// limit off for ever.
void HelperConnection::restartIdleLimit() {
  if (uv_is_closing(handles_->handle())) return;
  if (unanswered_ > 0 && unwritten_ == 0) {
    uv_timer_stop(&handles_->idle);
    return;
  }
  const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(idleLimit_);
  const auto expired = [](uv_timer_t* timer) {
    static_cast<HelperConnection*>(timer->data)->shared_from_this()->idledOut();
  };
  uv_timer_start(&handles_->idle, expired, static_cast<std::uint64_t>(limit.count()), 0);
}

void HelperConnection::idledOut() {
  if (unwritten_ > 0) return closeNow();
  refuse({}, helperError(HelperErrorCode::idle,
                         fmt::format("no whole request came in {} seconds",
                                     std::chrono::duration_cast<std::chrono::seconds>(idleLimit_).count())));
}

void HelperConnection::closeWhenAnswered() {
  stopReading();
  last_ = true;
  closeIfDone();
}

void HelperConnection::closeIfDone() {
  if (last_ && unwritten_ == 0 && (unanswered_ == 0 || refused_)) closeNow();
}

void HelperConnection::closeNow() {
  stopReading();
  last_ = true;
  if (uv_is_closing(handles_->handle())) return;
  const auto self = shared_from_this();
  const auto closed = [](uv_handle_t* handle) {
    auto& connection = *static_cast<HelperConnection*>(handle->data);
    if (--connection.handles_->open == 0) const auto last = std::move(connection.keepAlive_);
  };
  uv_close(handles_->handle(), closed);
  uv_close(handles_->idleHandle(), closed);
  if (closed_) closed_(self);
}

}  // namespace corvane
