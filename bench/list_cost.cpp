// What one cold run of a program costs, told as the figures of `corvanectl list`. A program of its own, because the
// kernel counts the starting process's memory in the child's, and this one has hardly any.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include "figure.h"

extern char** environ;

namespace {

constexpr int kRuns = 40;
constexpr double kProcessorLimit = 15;  // ms
constexpr double kMemoryLimit = 12;     // MiB

struct Cost {
  double milliseconds = 0;
  double mebibytes = 0;
};

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

std::optional<Cost> run(char** words) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int problem = posix_spawn(&child, words[0], &actions, nullptr, words, environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage used{};
  if (problem != 0 || wait4(child, &status, 0, &used) != child || status != 0) return std::nullopt;
  return Cost{.milliseconds = milliseconds(used.ru_utime) + milliseconds(used.ru_stime),
              .mebibytes = static_cast<double>(used.ru_maxrss) / 1024};
}

}  // namespace

int main(int count, char** words) {
  if (count < 2) {
    std::fputs("usage: list_cost PROGRAM [ARGUMENT...]\n", stderr);
    return 2;
  }
  std::vector<double> times;
  double memory = 0;
  for (int i = 0; i < kRuns; ++i) {
    const auto cost = run(words + 1);
    if (!cost) {
      fmt::print(stderr, "list_cost: {} did not end well\n", words[1]);
      return 1;
    }
    times.push_back(cost->milliseconds);
    memory = std::max(memory, cost->mebibytes);
  }
  corvane::bench::limitFigure("cold corvanectl list, CPU", "ms", corvane::bench::median(std::move(times)),
                              kProcessorLimit);
  corvane::bench::limitFigure("cold corvanectl list, memory", "MiB", memory, kMemoryLimit);
  return 0;
}
