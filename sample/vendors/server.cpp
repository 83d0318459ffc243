#include "sample/vendors/server.h"

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>
#include <uv.h>

#include <array>
#include <system_error>

#include "base/atomic_file.h"
#include "sample/vendors/vendor_folder.h"

namespace corvane::sample {

namespace {

constexpr int kBacklog = 512;
constexpr std::uint64_t kFolderCheckMilliseconds = 2000;

std::filesystem::path pidFile(const ServerSpec& spec) { return spec.sample / "var/run/vendors.pid"; }

// One request and its answer. Lives until both of its handles are closed.
class Connection {
 public:
  static void accept(uv_stream_t* listener, const VendorFolder& vendors) {
    auto* connection = new Connection(vendors);
    uv_tcp_init(listener->loop, &connection->socket_);
    uv_timer_init(listener->loop, &connection->delay_);
    connection->socket_.data = connection->delay_.data = connection;
    if (uv_accept(listener, connection->stream()) != 0) return connection->close();
    uv_read_start(connection->stream(), allocate, read);
  }

  // Ends the connection that the handle belongs to.
  static void drop(uv_handle_t* handle) { of(handle).close(); }

 private:
  explicit Connection(const VendorFolder& vendors) : vendors_(vendors) {}
  uv_stream_t* stream() { return reinterpret_cast<uv_stream_t*>(&socket_); }
  static Connection& of(const void* handle) {
    return *static_cast<Connection*>(uv_handle_get_data(static_cast<const uv_handle_t*>(handle)));
  }

  static void allocate(uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
    auto& space = of(handle).buffer_;
    *buffer = uv_buf_init(space.data(), static_cast<unsigned>(space.size()));
  }

  static void read(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
    auto& self = of(stream);
    if (count < 0) return self.close();
    if (self.answered_) return;
    self.head_.append(buffer->base, static_cast<std::size_t>(count));
    if (self.head_.contains("\r\n\r\n")) return self.answer();
    if (self.head_.size() > kRequestLimit) self.close();
  }

  void answer() {
    answered_ = true;
    const auto request = parseRequest(head_);
    if (!request) {
      reply_ = replyBytes({.status = 400, .body = "Bad request\n"}, false);
      return send();
    }
    const auto answer = vendors_.answer(request->path);
    hangUp_ = answer.hangUp;
    reply_ = replyBytes(answer.reply, request->headOnly);
    if (answer.delay.count() == 0) return send();
    uv_timer_start(
        &delay_, [](uv_timer_t* timer) { of(timer).send(); }, static_cast<std::uint64_t>(answer.delay.count()), 0);
  }

  void send() {
    if (hangUp_) return close();
    const auto buffer = uv_buf_init(reply_.data(), static_cast<unsigned>(reply_.size()));
    write_.data = this;
    const auto sent = [](uv_write_t* write, int) { static_cast<Connection*>(write->data)->close(); };
    if (uv_write(&write_, stream(), &buffer, 1, sent) != 0) close();
  }

  void close() {
    if (openHandles_ < 2 || uv_is_closing(reinterpret_cast<uv_handle_t*>(&socket_)) != 0) return;
    const auto closed = [](uv_handle_t* handle) {
      auto* self = &of(handle);
      if (--self->openHandles_ == 0) delete self;
    };
    uv_close(reinterpret_cast<uv_handle_t*>(&socket_), closed);
    uv_close(reinterpret_cast<uv_handle_t*>(&delay_), closed);
  }

  const VendorFolder& vendors_;
  uv_tcp_t socket_{};
  uv_timer_t delay_{};
  uv_write_t write_{};
  std::array<char, 4096> buffer_{};
  std::string head_;
  std::string reply_;
  bool answered_ = false;
  bool hangUp_ = false;
  int openHandles_ = 2;
};

}  // namespace

struct Server::Loop {
  ServerSpec spec;
  VendorFolder vendors;
  uv_loop_t loop{};
  uv_tcp_t listener{};
  uv_timer_t lifetime{};
  uv_timer_t folderCheck{};
  uv_signal_t terminate{};
  uv_signal_t interrupt{};
  uv_async_t told{};
  bool running = false;

  explicit Loop(ServerSpec given) : spec(std::move(given)), vendors(spec.sample / "vendor") {
    uv_loop_init(&loop);
    uv_tcp_init(&loop, &listener);
    for (auto* timer : {&lifetime, &folderCheck}) uv_timer_init(&loop, timer);
    for (auto* signal : {&terminate, &interrupt}) uv_signal_init(&loop, signal);
    uv_async_init(&loop, &told, [](uv_async_t* async) { uv_stop(async->loop); });
    listener.data = this;
    folderCheck.data = this;
  }

  ~Loop() {
    const auto close = [](uv_handle_t* handle, void* own) {
      if (uv_is_closing(handle) != 0) return;
      static_cast<Loop*>(own)->owns(handle) ? uv_close(handle, nullptr) : Connection::drop(handle);
    };
    uv_walk(&loop, close, this);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
    if (running) std::filesystem::remove(pidFile(spec), ignored());
  }

  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

  bool owns(const uv_handle_t* handle) const {
    const auto* first = reinterpret_cast<const char*>(this);
    const auto* one = reinterpret_cast<const char*>(handle);
    return one >= first && one < first + sizeof(Loop);
  }

  static std::error_code& ignored() {
    thread_local std::error_code error;
    return error;
  }

  int listen() {
    sockaddr_in address{};
    uv_ip4_addr("127.0.0.1", spec.port, &address);
    if (const int bound = uv_tcp_bind(&listener, reinterpret_cast<const sockaddr*>(&address), 0); bound != 0)
      return bound;
    return uv_listen(reinterpret_cast<uv_stream_t*>(&listener), kBacklog, [](uv_stream_t* stream, int status) {
      if (status == 0) Connection::accept(stream, static_cast<Loop*>(stream->data)->vendors);
    });
  }

  void armEnds() {
    const auto stop = [](uv_timer_t* timer) { uv_stop(timer->loop); };
    uv_timer_start(&lifetime, stop, static_cast<std::uint64_t>(spec.lifetime.count()), 0);
    const auto check = [](uv_timer_t* timer) {
      const auto& self = *static_cast<Loop*>(timer->data);
      if (!std::filesystem::is_directory(self.spec.sample / "vendor", ignored())) uv_stop(timer->loop);
    };
    uv_timer_start(&folderCheck, check, kFolderCheckMilliseconds, kFolderCheckMilliseconds);
    const auto told = [](uv_signal_t* signal, int) { uv_stop(signal->loop); };
    uv_signal_start(&terminate, told, SIGTERM);
    uv_signal_start(&interrupt, told, SIGINT);
  }
};

Server::Server(std::unique_ptr<Loop> loop) : loop_(std::move(loop)) {}
Server::~Server() = default;

Result<std::unique_ptr<Server>> Server::create(ServerSpec spec) {
  if (!std::filesystem::is_directory(spec.sample / "vendor", Loop::ignored()))
    return failure("CRVSample", ENOENT,
                   fmt::format("{} is no sample Mac: it has no vendor folder", spec.sample.string()));
  auto loop = std::make_unique<Loop>(std::move(spec));
  if (const int error = loop->listen(); error != 0)
    return failure("CRVSample", error, fmt::format("Listening on port {}: {}", loop->spec.port, uv_strerror(error)));
  auto server = std::unique_ptr<Server>(new Server(std::move(loop)));
  const auto& file = pidFile(server->loop_->spec);
  std::filesystem::create_directories(file.parent_path(), Loop::ignored());
  if (auto written = writeFileAtomically(file, fmt::format("{}\n", ::getpid())); !written)
    return std::unexpected(written.error());
  server->loop_->running = true;
  return server;
}

int Server::port() const {
  sockaddr_in address{};
  int size = sizeof address;
  uv_tcp_getsockname(&loop_->listener, reinterpret_cast<sockaddr*>(&address), &size);
  const auto* bytes = reinterpret_cast<const unsigned char*>(&address.sin_port);
  return bytes[0] * 256 + bytes[1];
}

void Server::stop() { uv_async_send(&loop_->told); }

void Server::run() {
  loop_->armEnds();
  uv_run(&loop_->loop, UV_RUN_DEFAULT);
}

}  // namespace corvane::sample
