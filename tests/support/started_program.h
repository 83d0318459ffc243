// A real program beside a test, gone with it.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace corvane::testing {

inline bool isInstalled(const std::string& program) { return ::access(program.c_str(), X_OK) == 0; }

// A program that ends with this object. Its output is dropped, descriptor `kept` excepted.
class StartedProgram {
 public:
  StartedProgram(std::vector<std::string> arguments, std::vector<std::string> environment, int kept = -1) {
    const auto pointers = [](std::vector<std::string>& texts) {
      std::vector<char*> result;
      for (auto& text : texts) result.push_back(text.data());
      result.push_back(nullptr);
      return result;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {0, 1, 2}) posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
    if (kept >= 0) posix_spawn_file_actions_adddup2(&actions, kept, kept);  // keeps it open over exec
    if (::posix_spawn(&pid_, arguments.front().c_str(), &actions, nullptr, pointers(arguments).data(),
                      pointers(environment).data()) != 0)
      pid_ = 0;
    posix_spawn_file_actions_destroy(&actions);
  }
  ~StartedProgram() { end(); }
  StartedProgram(const StartedProgram&) = delete;
  StartedProgram& operator=(const StartedProgram&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }  // 0 when it did not start or has ended

  void signal(int number) const {
    if (pid_ > 0) ::kill(pid_, number);
  }
  void end() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }

 private:
  pid_t pid_ = 0;
};

// Looks every few milliseconds; what is waited for is another process.
inline bool eventually(const std::function<bool()>& holds) {
  for (int i = 0; i < 2000; ++i) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

// The line by which a program tells on a descriptor that it is ready; `start` starts it with that descriptor. Empty
// when it ends without one.
template <typename Start>
std::string firstLineOf(const Start& start) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return {};
  start(ends[1]);
  ::close(ends[1]);
  std::string line;
  char letter = 0;
  while (::read(ends[0], &letter, 1) == 1 && letter != '\n') line += letter;
  ::close(ends[0]);
  return line;
}

}  // namespace corvane::testing
