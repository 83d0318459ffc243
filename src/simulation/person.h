// Somebody at a simulated Mac, who answers the prompt as their habits are.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/lease.h"
#include "presentation/deferral_prompt_controller.h"
#include "simulation/diary.h"

namespace corvane {

struct Habits {
  enum class Answer { defers, installs, ignores, closes };
  Answer answer = Answer::ignores;
  std::int64_t minutes = 60;  // of a deferral; where that is not offered, what is selected
  Duration thinks = 30s;      // before an answer
  // Somebody is there from `comes` to `leaves`, minutes of the local day in that order, and on Saturdays and Sundays
  // only with `weekends`. A prompt that still stands is answered on the next arrival.
  std::int64_t comes = 0;
  std::int64_t leaves = 24 * 60;
  bool weekends = true;
};

// Main thread. Answers each presentation of the prompt once. The references outlive it.
class Person {
 public:
  Person(const StatusViewModel& model, const WorkflowServices& services, DeferralPromptController& prompt,
         Diary& diary);

  Habits habits;

  // They said install, or closed the panel, in the presentation that stood last.
  [[nodiscard]] bool saidInstall() const { return saidInstall_ == generation(); }
  [[nodiscard]] bool pressedDefer() const { return pressedDefer_ == generation(); }

  // What anybody may do at any time, beside their habits.
  void install();
  void defer();
  void close();

 private:
  [[nodiscard]] std::int64_t generation() const { return model_.fields().deferral.deferralPromptGeneration; }
  [[nodiscard]] bool isThere(Date date) const;
  [[nodiscard]] Date nextArrival(Date date) const;
  void noticed();
  void answer();

  const StatusViewModel& model_;
  WorkflowServices services_;
  DeferralPromptController& prompt_;
  Diary& diary_;
  std::int64_t seen_ = 0;
  std::optional<std::int64_t> saidInstall_;
  std::optional<std::int64_t> pressedDefer_;
  Lease thought_;
  Lease changes_;
};

}  // namespace corvane
