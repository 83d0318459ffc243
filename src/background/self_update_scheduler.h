// Keeps the program itself up to date as any other application is: asks now and then for the latest version of its own
// label, then installs it quietly or offers it.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "background/background_services.h"
#include "background/repeating_timer.h"
#include "base/lifeline.h"
#include "core/policies/self_update_version_check.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. Model and services outlive it.
class SelfUpdateScheduler {
 public:
  static constexpr Duration kTickLeeway = 60s;

  SelfUpdateScheduler(StatusViewModel& model, const BackgroundServices& services);

  // A second start replaces the timer; also called when the settings have changed.
  void start();
  void tick();

 private:
  // What one answer is judged by.
  struct Question {
    Label label;
    SharedConfiguration config;
  };

  void answered(const Question& question, const Result<Apps>& apps);
  void judge(const Question& question, const std::string& available);
  void offer(const Label& label, const std::string& available, std::optional<std::string> running);
  void surface(const SelfUpdateAvailability& update, const std::string& available);

  StatusViewModel& model_;
  BackgroundServices services_;
  Logger log_;
  RepeatingTimer timer_;
  Lifeline lifeline_;
};

}  // namespace corvane
