// A machine whose time moves only when it is told to. It never waits and has no threads.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "base/turn_queue.h"
#include "base/work_queue.h"
#include "platform/clock.h"

namespace corvane {

// Everything runs on the calling thread, inside the operations that let time pass or run what is ready; none of
// these may be called from a task. Tasks run in the order of the turn queue that the real loops use. A task
// that is due runs at its own instant, however far an operation moves time.
class VirtualMachine {
 public:
  // Sunday, 2026-11-01 12:00 UTC unless told otherwise.
  static constexpr Date kStart = Date(std::chrono::sys_days(std::chrono::year(2026) / 11 / 1)) + 12h;

  explicit VirtualMachine(Date start = kStart);
  VirtualMachine(const VirtualMachine&) = delete;
  VirtualMachine& operator=(const VirtualMachine&) = delete;

  [[nodiscard]] Clock& clock() { return clock_; }
  [[nodiscard]] MainQueue& main() { return queue_; }
  // Its jobs run as posts of the main queue, in order, or in the order that reorderAnswers() gives.
  [[nodiscard]] WorkQueue& work() { return work_; }

  [[nodiscard]] Date now() const { return clock_.wall; }
  [[nodiscard]] SteadyTime steadyNow() const { return clock_.steady; }

  // Runs posts and due timers until none is left; time stands still. Ends the program with a message when
  // that never comes to be, since then the code under test goes round in circles.
  void runUntilIdle();

  // Both clocks move on; what falls due on the way runs at its instant. Ends idle.
  void advance(Duration by);
  // As advance, by the wall clock. A date that is not ahead only runs what is ready.
  void advanceTo(Date date);

  // The wall clock jumps, steady time does not. Alarms that became due run with the next operation.
  void setWallClock(Date date) { clock_.wall = date; }

  // The machine sleeps: wall time passes, steady time stands still. Then the wall-time alarms that are due run.
  void suspend(Duration by);

  // From now on each wait of advance() ends this much later than was asked for, but not past its end.
  void setLateness(Duration lateness) { lateness_ = lateness; }

  // From now on, the next job to run is drawn among the waiting ones by this seed.
  void reorderAnswers(std::uint64_t seed) { work_.random.emplace(seed); }

  // How far the next timer is; absent when nothing is armed. Wall-time alarms count as a minute away at most.
  [[nodiscard]] std::optional<Duration> timeToNext() const { return queue_.timeToNext(); }

 private:
  struct VirtualClock final : Clock {
    [[nodiscard]] Date now() const override { return wall; }
    [[nodiscard]] SteadyTime steadyNow() const override { return steady; }
    Date wall;
    SteadyTime steady{1h};
  };
  struct VirtualWork final : WorkQueue {
    explicit VirtualWork(MainQueue& queue) : main(queue) {}
    void run(Task job) override;
    void runOne();
    MainQueue& main;
    std::vector<Task> waiting;
    std::optional<std::mt19937_64> random;
  };

  void move(Duration by);

  VirtualClock clock_;
  TurnQueue queue_;
  VirtualWork work_;
  Duration lateness_{};
};

}  // namespace corvane
