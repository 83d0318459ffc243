#include "platform/scripted/virtual_time.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace corvane {
namespace {

// Turns at one instant. Real flows need a few dozen.
constexpr int kTurnLimit = 1'000'000;

}  // namespace

VirtualMachine::VirtualMachine(Date start)
    : queue_({.steady = [this] { return clock_.steady; }, .wall = [this] { return clock_.wall; }}, [] {}),
      work_(queue_) {
  clock_.wall = start;
}

void VirtualMachine::VirtualWork::run(Task job) {
  waiting.push_back(std::move(job));
  main.post([this] { runOne(); });
}

void VirtualMachine::VirtualWork::runOne() {
  const auto drawn = random ? static_cast<std::ptrdiff_t>((*random)() % waiting.size()) : 0;
  auto job = std::move(waiting[static_cast<std::size_t>(drawn)]);
  waiting.erase(waiting.begin() + drawn);
  job();
}

void VirtualMachine::runUntilIdle() {
  for (int turn = 0; turn < kTurnLimit; ++turn)
    if (!queue_.runReady()) return;
  std::fputs("virtual machine: the turns at one instant never end\n", stderr);
  std::abort();
}

void VirtualMachine::move(Duration by) {
  clock_.steady += by;
  clock_.wall += by;
}

void VirtualMachine::advance(Duration by) {
  const auto end = clock_.steady + std::max(by, Duration::zero());
  runUntilIdle();
  while (clock_.steady < end) {
    const auto left = end - clock_.steady;
    const auto next = queue_.timeToNext();
    move(next ? std::min(*next + lateness_, left) : left);
    runUntilIdle();
  }
}

void VirtualMachine::advanceTo(Date date) { advance(date - clock_.wall); }

void VirtualMachine::suspend(Duration by) {
  clock_.wall += by;
  runUntilIdle();
}

}  // namespace corvane
