// What programs that run cost while nothing happens: how often they wake, their processor time, their memory.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "figure.h"

namespace {

constexpr double kWatched = 60;          // seconds
constexpr double kWakeUpLimit = 6;       // a minute
constexpr double kProcessorLimit = 0.1;  // per cent
constexpr double kMemoryLimit = 15;      // MiB

// The number behind `name` in a status file of the kernel; 0 where there is none.
double numberIn(const std::filesystem::path& file, const std::string& name) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1));
  return 0;
}

// Of all threads. A thread that waits gives the processor away by itself, once for each time that it woke.
struct Use {
  double wakeUps = 0;
  double seconds = 0;
};
Use useOf(const std::string& process) {
  Use use;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/" + process + "/task")) {
    use.wakeUps += numberIn(thread.path() / "status", "voluntary_ctxt_switches");
    std::ifstream times(thread.path() / "schedstat");
    double nanoseconds = 0;
    times >> nanoseconds;
    use.seconds += nanoseconds / 1e9;
  }
  return use;
}

int usage() {
  std::fputs("usage: idle_cost PID-OF-THE-APPLICATION PID-OF-THE-HELPER\n", stderr);
  return 2;
}

}  // namespace

int main(int count, char** words) try {
  if (count != 3) return usage();
  using corvane::bench::limitFigure;
  const auto before = useOf(words[1]);
  std::this_thread::sleep_for(std::chrono::duration<double>(kWatched));
  const auto after = useOf(words[1]);
  limitFigure("application at rest, wake-ups", "a minute", (after.wakeUps - before.wakeUps) * 60 / kWatched,
              kWakeUpLimit);
  limitFigure("application at rest, CPU", "%", (after.seconds - before.seconds) * 100 / kWatched, kProcessorLimit);
  const auto helper = std::string("/proc/") + words[2] + "/status";
  const auto memory = numberIn(helper, "VmRSS") / 1024;
  limitFigure("helper at rest, memory", "MiB", memory > 0 ? memory : kMemoryLimit * 2, kMemoryLimit);
  return 0;
} catch (const std::exception& problem) {
  std::fprintf(stderr, "idle_cost: %s\n", problem.what());
  return 1;
}
