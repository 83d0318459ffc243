// The helper's door against a bare echo on the same kind of socket, and a check of many labels whose vendors answer
// slowly against the same check one label after another.
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <uv.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "base/frame.h"
#include "core/client/helper_messages.h"
#include "figure.h"
#include "helper/helper_listener.h"
#include "helper/version_checker.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/system_entropy.h"
#include "platform/uv/uv_child_processes.h"
#include "platform/uv/uv_main_loop.h"

namespace corvane::bench {
namespace {

constexpr int kRoundTrips = 5000;
constexpr int kBacklog = 128;
constexpr int kLabels = 200;
constexpr auto kPageDelay = std::chrono::milliseconds(50);

struct SilentLog final : LogSink {
  void write(LogLevel, std::string_view) override {}
};

struct Folder {
  std::filesystem::path path;
  Folder() {
    auto name = (std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    path = name;
  }
  ~Folder() { std::filesystem::remove_all(path); }
};

sockaddr_un addressOf(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

// One connection, one request, one answer, as the client does it.
void roundTrip(const sockaddr_un& address, const std::string& frame) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) std::abort();
  (void)!write(fd, frame.data(), frame.size());
  FrameDecoder decoder(kAnswerFrameLimit);
  char buffer[4096];
  while (!decoder.next()) {
    const auto got = read(fd, buffer, sizeof buffer);
    if (got <= 0 || !decoder.feed({buffer, static_cast<std::size_t>(got)})) std::abort();
  }
  close(fd);
}

// The least that a libuv server can do for a peer: take it, read, write the same bytes back, close when it has gone.
struct EchoPeer {
  uv_pipe_t pipe{};
  uv_write_t write{};
  std::array<char, 4096> buffer;

  static void greet(uv_stream_t* listening, int) {
    auto* peer = new EchoPeer;
    uv_pipe_init(listening->loop, &peer->pipe, 0);
    peer->pipe.data = peer;
    auto* stream = reinterpret_cast<uv_stream_t*>(&peer->pipe);
    if (uv_accept(listening, stream) != 0 || uv_read_start(stream, room, took) != 0) std::abort();
  }
  static void room(uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
    auto& bytes = static_cast<EchoPeer*>(handle->data)->buffer;
    *buffer = uv_buf_init(bytes.data(), static_cast<unsigned>(bytes.size()));
  }
  static void took(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
    auto* peer = static_cast<EchoPeer*>(stream->data);
    if (count < 0) {
      uv_close(reinterpret_cast<uv_handle_t*>(stream),
               [](uv_handle_t* handle) { delete static_cast<EchoPeer*>(handle->data); });
      return;
    }
    const auto back = uv_buf_init(buffer->base, static_cast<unsigned>(count));
    uv_write(&peer->write, stream, &back, 1, [](uv_write_t*, int) {});
  }
};

// Socket, loop, connections and client are those of the helper's figure; what is sent is as long as its answer.
double echoMicroseconds(const std::filesystem::path& path, const std::string& frame) {
  uv_loop_t loop;
  uv_pipe_t listening;
  uv_async_t end;
  if (uv_loop_init(&loop) != 0 || uv_pipe_init(&loop, &listening, 0) != 0 ||
      uv_pipe_bind(&listening, path.c_str()) != 0 ||
      uv_async_init(&loop, &end, [](uv_async_t* async) { uv_stop(async->loop); }) != 0 ||
      uv_listen(reinterpret_cast<uv_stream_t*>(&listening), kBacklog, EchoPeer::greet) != 0)
    std::abort();
  std::thread server([&] { uv_run(&loop, UV_RUN_DEFAULT); });
  const auto address = addressOf(path);
  const auto time = medianMicroseconds(kRoundTrips, [&] { roundTrip(address, frame); });
  uv_async_send(&end);
  server.join();
  uv_close(reinterpret_cast<uv_handle_t*>(&listening), nullptr);
  uv_close(reinterpret_cast<uv_handle_t*>(&end), nullptr);
  uv_run(&loop, UV_RUN_DEFAULT);
  uv_loop_close(&loop);
  return time;
}

std::string helperAnswer(std::string_view id) {
  return composeAnswer(id, toJson(StatusInfo{.helperVersion = "1", .processIdentifier = 1}));
}

double helperMicroseconds(const std::filesystem::path& path, const std::string& frame) {
  std::atomic<MainQueue*> queue = nullptr;
  std::atomic<UvMainLoop*> running = nullptr;
  std::thread server([&] {
    const SystemClock clock;
    SilentLog log;
    UvMainLoop loop(clock);
    auto listener = HelperListener::open(
        {.loop = loop.loop(), .main = loop.mainQueue(), .log = log, .clock = clock},
        {.socket = path,
         .mayAsk = [](uid_t) { return true; },
         .handler = [](HelperRequest request, Completion<std::string> answer) { answer(helperAnswer(request.id)); }});
    if (!listener) std::abort();
    running = &loop;
    queue = &loop.mainQueue();
    loop.run();
    listener->reset();
    loop.turn();
  });
  while (!queue) std::this_thread::yield();
  const auto address = addressOf(path);
  const auto time = medianMicroseconds(kRoundTrips, [&] { roundTrip(address, frame); });
  queue.load()->post([&] { running.load()->quit(0); });
  server.join();
  return time;
}

// A vendor's page: answers every connection after a while with a version.
class Vendor {
 public:
  Vendor() : listening_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listening_, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listening_, 256) != 0)
      std::abort();
    getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    server_ = std::thread([this] {
      for (int peer = 0; (peer = accept(listening_, nullptr, nullptr)) >= 0;) std::thread(answer, peer).detach();
    });
  }
  ~Vendor() {
    shutdown(listening_, SHUT_RDWR);
    server_.join();
    close(listening_);
  }
  [[nodiscard]] int port() const { return port_; }

 private:
  static void answer(int peer) {
    char buffer[4096];
    (void)!read(peer, buffer, sizeof buffer);
    std::this_thread::sleep_for(kPageDelay);
    constexpr std::string_view page = "HTTP/1.0 200 OK\r\nContent-Length: 6\r\n\r\n4.2.1\n";
    (void)!write(peer, page.data(), page.size());
    close(peer);
  }
  int listening_;
  int port_ = 0;
  std::thread server_;
};

std::vector<VersionQuestion> writeLabels(const std::filesystem::path& folder, int port) {
  std::vector<VersionQuestion> questions;
  for (int i = 0; i < kLabels; ++i) {
    const auto label = fmt::format("label{}", i);
    const auto file = folder / (label + ".sh");
    std::ofstream(file) << fmt::format(
        "{})\n    name=\"App {}\"\n    appNewVersion=$(curl -s http://127.0.0.1:{}/)\n    ;;\n", label, i, port);
    questions.push_back({.label = Label(label), .literal = std::nullopt, .fragment = file});
  }
  return questions;
}

double checkMilliseconds(const std::filesystem::path& folder, std::vector<VersionQuestion> questions,
                         std::size_t atOnce) {
  const SystemClock clock;
  SystemEntropy entropy;
  SilentLog log;
  UvMainLoop loop(clock);
  UvChildProcesses children(loop.loop(), loop.mainQueue());
  VersionChecker checker(
      {.children = children, .main = loop.mainQueue(), .entropy = entropy, .log = log, .childrenAtOnce = atOnce},
      "/bin/zsh", [] { return std::nullopt; });
  const auto asked = questions.size();
  std::size_t found = 0;
  const auto start = std::chrono::steady_clock::now();
  checker.check(std::move(questions), {.functions = folder / "functions.sh", .askTool = std::nullopt},
                [&](VersionAnswers answers) {
                  for (const auto& [label, answer] : answers) found += answer.version == "4.2.1" ? 1 : 0;
                  loop.quit(0);
                });
  loop.run();
  const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
  if (found != asked) fmt::print("version check | only {} of {} labels were answered | misses\n", found, asked);
  return took.count();
}

// Of all children that have ended.
double childrenMilliseconds() {
  rusage used{};
  getrusage(RUSAGE_CHILDREN, &used);
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return of(used.ru_utime) + of(used.ru_stime);
}

int run() {
  const Folder folder;
  const auto frame = encodeFrame(composeRequest({.id = "bench", .question = ask::Status{}}));
  const auto echo = echoMicroseconds(folder.path / "echo.sock", encodeFrame(helperAnswer("bench")));
  ratioFigure("helper round trip", "us", helperMicroseconds(folder.path / "helper.sock", frame), {"bare echo", echo},
              2);

  const Vendor vendor;
  std::ofstream(folder.path / "functions.sh") << "printlog() { echo \"$1\" }\n";
  const auto questions = writeLabels(folder.path, vendor.port());
  const auto before = childrenMilliseconds();
  const auto together = checkMilliseconds(folder.path, questions, kChildrenAtOnce);
  const auto work = childrenMilliseconds() - before;
  // A fifth of the labels, times five: alone they would run into the limit of a whole check on a slow machine.
  const std::vector some(questions.begin(), questions.begin() + kLabels / 5);
  double alone = 0;
  for (int part = 0; part < 5; ++part) alone += checkMilliseconds(folder.path, some, 1);
  // The children's own work bounds what starting more of them at once can save.
  const auto name = fmt::format("200 labels, pages after 50 ms, {:.1f} ms of zsh and curl each on {} processors",
                                work / kLabels, std::thread::hardware_concurrency());
  ratioFigure(name, "ms", together, {"one after another", alone}, 6, true);
  return 0;
}

}  // namespace
}  // namespace corvane::bench

int main() { return corvane::bench::run(); }
