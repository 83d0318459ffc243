#include "platform/uv/uv_child_processes.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>
#include <uv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "base/program_words.h"
#include "platform/uv/line_splitter.h"

namespace corvane {

namespace {

Error startError(const std::string& executable, int uvCode) {
  return {.domain = UvChildProcesses::errorDomain,
          .code = -uvCode,
          .text = "starting " + executable + ": " + uv_strerror(uvCode)};
}

// Fails only for a child that has ended already: nobody may ask for more than the system allows, and we do not.
void bound(pid_t child, decltype(RLIMIT_AS) resource, std::uint64_t limit) {
  rlimit now{};
  if (::prlimit(child, resource, nullptr, &now) != 0) return;
  const auto most = std::min<rlim_t>(limit, now.rlim_max);
  const rlimit wanted{.rlim_cur = most, .rlim_max = most};
  ::prlimit(child, resource, &wanted, nullptr);
}

}  // namespace

// One child and its handles. It keeps itself alive until libuv has given up the last of them.
class UvChildProcesses::Child : public std::enable_shared_from_this<Child> {
 public:
  Child(MainQueue& main, ChildLimits limits, std::shared_ptr<Children> siblings, ChildSpec spec,
        std::function<void(std::string_view)> onLine, Completion<Result<ChildExit>> done)
      : main_(main),
        limits_(limits),
        siblings_(std::move(siblings)),
        spec_(std::move(spec)),
        onLine_(std::move(onLine)),
        done_(std::move(done)) {}
  ~Child() { done_.abandon(); }

  void start(uv_loop_t* loop);
  void signalGroup(int signal) const {
    if (pid_ > 0 && !finished_) ::kill(-pid_, signal);
  }
  void terminate() {
    toldToEnd_ = true;
    signalGroup(SIGTERM);
  }
  void kill() {
    signalGroup(SIGKILL);
    toldToEnd_ = false;
    endGroupWatch();
    finishWhenAllEnded();
  }
  // The owner dies: nothing is told any more, the process goes on.
  void letGo();
  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  struct Stream {
    uv_pipe_t pipe;
    LineSplitter lines{kChildLineLimit};
    std::string kept;
    bool open = false;
  };

  [[nodiscard]] Stream& streamOf(const uv_stream_t* pipe) {
    return reinterpret_cast<uv_stream_t*>(&streams_[0].pipe) == pipe ? streams_[0] : streams_[1];
  }
  int openStream(uv_loop_t* loop, Stream& stream, uv_stdio_container_t& childEnd);
  int spawn(uv_loop_t* loop);
  void armTimeLimit();
  void fail(int uvCode);
  void exited(std::int64_t code, int signal);
  void received(Stream& stream, std::string_view bytes);
  void tell(std::vector<std::string> lines);
  void endStream(Stream& stream);
  void closeStreams();
  // The dead whom nobody reaped yet count too; an owner's kill() ends the wait for them.
  [[nodiscard]] bool groupLives() const { return ::kill(-pid_, 0) == 0 || errno != ESRCH; }
  void watchGroup();
  void endGroupWatch();
  void finishWhenAllEnded();
  void deliver();
  void hold() {
    ++openHandles_;
    self_ = shared_from_this();
    siblings_->insert(this);
  }
  template <class Handle>
  void close(Handle& handle) {
    uv_close(reinterpret_cast<uv_handle_t*>(&handle),
             [](uv_handle_t* closed) { static_cast<Child*>(closed->data)->closed(); });
  }
  void closed() {
    if (--openHandles_ > 0) return;
    siblings_->erase(this);
    self_.reset();
  }

  MainQueue& main_;
  ChildLimits limits_;
  std::shared_ptr<Children> siblings_;
  ChildSpec spec_;
  std::function<void(std::string_view)> onLine_;
  Completion<Result<ChildExit>> done_;
  std::optional<Error> failure_;
  ChildExit exit_;
  uv_process_t process_;
  std::array<Stream, 2> streams_;
  std::array<char, 16 * 1024> buffer_;
  pid_t pid_ = 0;
  bool processOpen_ = false;
  bool exited_ = false;
  bool finished_ = false;
  bool toldToEnd_ = false;  // politely, and nobody was killed yet
  Lease groupWatch_;
  Lease timeLimit_;
  Lease streamLimit_;
  int openHandles_ = 0;
  std::shared_ptr<Child> self_;
};

void UvChildProcesses::Child::start(uv_loop_t* loop) {
  if (!spec_.executable.starts_with('/')) return fail(UV_EINVAL);
  if (const int code = spawn(loop); code != 0) return fail(code);
  armTimeLimit();
}

int UvChildProcesses::Child::openStream(uv_loop_t* loop, Stream& stream, uv_stdio_container_t& childEnd) {
  uv_file ends[2];
  if (const int code = uv_pipe(ends, UV_NONBLOCK_PIPE, 0); code != 0) return code;
  childEnd.flags = UV_INHERIT_FD;
  childEnd.data.fd = ends[1];
  uv_pipe_init(loop, &stream.pipe, 0);
  stream.pipe.data = this;
  stream.open = true;
  hold();
  if (const int code = uv_pipe_open(&stream.pipe, ends[0]); code != 0) {
    ::close(ends[0]);
    return code;
  }
  return uv_read_start(
      reinterpret_cast<uv_stream_t*>(&stream.pipe),
      [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
        auto& bytes = static_cast<Child*>(handle->data)->buffer_;
        *buffer = uv_buf_init(bytes.data(), static_cast<unsigned int>(bytes.size()));
      },
      [](uv_stream_t* pipe, ssize_t count, const uv_buf_t* buffer) {
        auto* child = static_cast<Child*>(pipe->data);
        auto& source = child->streamOf(pipe);
        if (count > 0) child->received(source, {buffer->base, static_cast<std::size_t>(count)});
        if (count < 0) child->endStream(source);
      });
}

int UvChildProcesses::Child::spawn(uv_loop_t* loop) {
  std::array<uv_stdio_container_t, 3> stdio{};
  for (auto& container : stdio) container.flags = UV_IGNORE;
  int code = 0;
  if (!spec_.detached)
    for (std::size_t i = 0; i < streams_.size() && code == 0; ++i) code = openStream(loop, streams_[i], stdio[i + 1]);

  if (code == 0) {
    auto arguments = ProgramWords::arguments(spec_.executable, spec_.arguments);
    auto environment = ProgramWords::environment(spec_.environment);
    uv_process_options_t options{};
    options.file = spec_.executable.c_str();
    options.args = arguments.data();
    options.env = environment.data();
    options.cwd = spec_.folder.c_str();
    options.stdio = stdio.data();
    options.stdio_count = static_cast<int>(stdio.size());
    options.flags = UV_PROCESS_DETACHED;  // a session, and so a process group, of its own
    if (spec_.runAs) {
      options.flags |= UV_PROCESS_SETUID | UV_PROCESS_SETGID;
      options.uid = spec_.runAs->first;
      options.gid = spec_.runAs->second;
    }
    options.exit_cb = [](uv_process_t* process, std::int64_t status, int signal) {
      static_cast<Child*>(process->data)->exited(status, signal);
    };
    process_.data = this;
    processOpen_ = true;
    hold();
    code = uv_spawn(loop, &process_, &options);
    process_.data = this;
  }
  for (const auto& container : stdio)
    if (container.flags == UV_INHERIT_FD) ::close(container.data.fd);
  if (code != 0) return code;
  pid_ = process_.pid;
  if (spec_.bounds) {
    bound(pid_, RLIMIT_AS, spec_.bounds->memory);
    bound(pid_, RLIMIT_FSIZE, spec_.bounds->fileSize);
  }
  if (spec_.detached) uv_unref(reinterpret_cast<uv_handle_t*>(&process_));
  return 0;
}

void UvChildProcesses::Child::armTimeLimit() {
  if (!spec_.timeLimit) return;
  timeLimit_ = main_.after(*spec_.timeLimit, [this] {
    exit_.timedOut = true;
    signalGroup(SIGTERM);
    timeLimit_ = main_.after(limits_.killDelay, [this] { signalGroup(SIGKILL); });
  });
}

void UvChildProcesses::Child::fail(int uvCode) {
  failure_ = startError(spec_.executable, uvCode);
  closeStreams();
  if (std::exchange(processOpen_, false)) close(process_);
  finished_ = true;
  main_.post([child = shared_from_this()] { child->deliver(); });
}

void UvChildProcesses::Child::exited(std::int64_t code, int signal) {
  exit_.code = signal != 0 ? 128 + signal : static_cast<int>(code);
  exited_ = true;
  processOpen_ = false;
  if (spec_.endsGroup) signalGroup(SIGKILL);
  close(process_);
  if (toldToEnd_ && groupLives()) watchGroup();
  streamLimit_ = main_.after(limits_.streamLimit, [this] {
    closeStreams();
    finishWhenAllEnded();
  });
  finishWhenAllEnded();
}

void UvChildProcesses::Child::watchGroup() {
  hold();
  groupWatch_ = main_.every(kChildGroupLook, [this] {
    if (groupLives()) return;
    const auto self = shared_from_this();
    endGroupWatch();
    finishWhenAllEnded();
  });
}

void UvChildProcesses::Child::endGroupWatch() {
  if (!groupWatch_.active()) return;
  groupWatch_.release();
  closed();
}

void UvChildProcesses::Child::received(Stream& stream, std::string_view bytes) {
  const auto room = spec_.outputLimit - std::min(spec_.outputLimit, stream.kept.size());
  stream.kept.append(bytes.substr(0, room));
  if (onLine_) tell(stream.lines.take(bytes));
}

void UvChildProcesses::Child::tell(std::vector<std::string> lines) {
  if (lines.empty()) return;
  main_.post([child = shared_from_this(), lines = std::move(lines)] {
    for (const auto& line : lines)
      if (child->onLine_) child->onLine_(line);
  });
}

void UvChildProcesses::Child::endStream(Stream& stream) {
  if (!std::exchange(stream.open, false)) return;
  close(stream.pipe);
  if (onLine_) tell(stream.lines.rest());
  finishWhenAllEnded();
}

void UvChildProcesses::Child::closeStreams() {
  for (auto& stream : streams_) {
    if (!std::exchange(stream.open, false)) continue;
    close(stream.pipe);
    if (onLine_) tell(stream.lines.rest());
  }
}

void UvChildProcesses::Child::finishWhenAllEnded() {
  if (finished_ || !exited_ || groupWatch_.active() || streams_[0].open || streams_[1].open) return;
  // What the child left behind in its group has no more time than the child had.
  if (exit_.timedOut) signalGroup(SIGKILL);
  finished_ = true;
  timeLimit_.release();
  streamLimit_.release();
  exit_.output = std::move(streams_[0].kept);
  exit_.errors = std::move(streams_[1].kept);
  main_.post([child = shared_from_this()] { child->deliver(); });
}

void UvChildProcesses::Child::deliver() {
  if (!done_) return;
  // Released before the answer: it may hold whoever is answered.
  onLine_ = nullptr;
  auto done = std::move(done_);
  if (failure_)
    done(std::unexpected(*failure_));
  else
    done(std::move(exit_));
}

void UvChildProcesses::Child::letGo() {
  const auto self = shared_from_this();
  done_.abandon();
  onLine_ = nullptr;
  timeLimit_.release();
  streamLimit_.release();
  endGroupWatch();
  finished_ = true;
  closeStreams();
  if (std::exchange(processOpen_, false)) close(process_);
}

UvChildProcesses::UvChildProcesses(uv_loop_s* loop, MainQueue& main, ChildLimits limits)
    : loop_(loop), main_(main), limits_(limits), children_(std::make_shared<Children>()) {}

UvChildProcesses::~UvChildProcesses() {
  for (auto* child : Children(*children_)) child->letGo();
}

std::shared_ptr<ChildHandle> UvChildProcesses::start(ChildSpec spec, std::function<void(std::string_view)> onLine,
                                                     Completion<Result<ChildExit>> done) {
  struct Handle final : ChildHandle {
    explicit Handle(const std::shared_ptr<Child>& started) : number(started->pid()), child(started) {}
    [[nodiscard]] pid_t pid() const override { return number; }
    void terminate() override {
      if (const auto live = child.lock()) live->terminate();
    }
    void kill() override {
      if (const auto live = child.lock()) live->kill();
    }
    pid_t number;
    std::weak_ptr<Child> child;
  };
  const auto child =
      std::make_shared<Child>(main_, limits_, children_, std::move(spec), std::move(onLine), std::move(done));
  child->start(loop_);
  return std::make_shared<Handle>(child);
}

}  // namespace corvane
