#include "platform/posix/detached_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/program_words.h"

namespace corvane {

namespace {

struct Report {
  pid_t pid = 0;
  int failure = 0;
};

std::unexpected<Error> failed(const std::filesystem::path& executable, int errnoValue) {
  return failure("CRVDetachedProcess", errnoValue,
                 "starting " + executable.string() + ": " + std::strerror(errnoValue));
}

// Everything below runs between fork and exec, where only async-signal-safe calls are allowed.

void tell(int pipe, Report report) {
  while (::write(pipe, &report, sizeof report) < 0 && errno == EINTR) {
  }
}

void openNullStreams() {
  const int null = ::open("/dev/null", O_RDWR);
  if (null < 0) return;
  for (int stream = 0; stream <= 2; ++stream) ::dup2(null, stream);
  if (null > 2) ::close(null);
}

void resetSignals() {
  for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void becomeProgram(int pipe, char* const* arguments, char* const* environment) {
  openNullStreams();
  resetSignals();
  ::umask(022);
  if (::chdir("/") == 0) {
    tell(pipe, {.pid = ::getpid(), .failure = 0});
    ::execve(arguments[0], arguments, environment);
  }
  tell(pipe, {.pid = ::getpid(), .failure = errno});
  ::_exit(127);
}

// The one in the middle leads the session and ends, so that nobody of ours is the program's parent.
[[noreturn]] void becomeLeader(int pipe, char* const* arguments, char* const* environment) {
  ::setsid();
  const auto child = ::fork();
  if (child < 0) tell(pipe, {.pid = 0, .failure = errno});
  if (child == 0) becomeProgram(pipe, arguments, environment);
  ::_exit(0);
}

// The pipe closes when the program is loaded, so the last report before its end is the one that counts.
Report readReports(int pipe) {
  Report last{.pid = 0, .failure = ECHILD};
  Report report;
  for (;;) {
    const auto got = ::read(pipe, &report, sizeof report);
    if (got < 0 && errno == EINTR) continue;
    if (got != sizeof report) return last;
    last = report;
  }
}

}  // namespace

Result<pid_t> startDetached(const DetachedProgram& program) {
  const auto arguments = ProgramWords::arguments(program.executable.string(), program.arguments);
  const auto environment = ProgramWords::environment(program.environment);

  int pipe[2];
  if (::pipe2(pipe, O_CLOEXEC) != 0) return failed(program.executable, errno);
  const auto leader = ::fork();
  if (leader == 0) becomeLeader(pipe[1], arguments.data(), environment.data());
  const int forkError = errno;
  ::close(pipe[1]);
  if (leader < 0) {
    ::close(pipe[0]);
    return failed(program.executable, forkError);
  }
  const auto report = readReports(pipe[0]);
  ::close(pipe[0]);
  while (::waitpid(leader, nullptr, 0) < 0 && errno == EINTR) {
  }
  if (report.failure != 0) return failed(program.executable, report.failure);
  return report.pid;
}

}  // namespace corvane
