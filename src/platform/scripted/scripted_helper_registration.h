// A service manager that does as it is told.
#pragma once

#include <functional>
#include <list>
#include <optional>
#include <utility>

#include "base/main_queue.h"
#include "platform/helper_registration.h"

namespace corvane {

// Open fields: a test sets what the next call meets and reads what was asked.
class ScriptedHelperRegistration final : public HelperRegistration {
 public:
  explicit ScriptedHelperRegistration(MainQueue& main) : main_(main) {}
  ~ScriptedHelperRegistration() override;

  HelperStatus current = HelperStatus::enabled;
  HelperStatus afterRegister = HelperStatus::enabled;
  std::optional<Error> registerFailure;
  std::optional<Error> unregisterFailure;
  Duration unregisterTakes = Duration::zero();
  std::optional<std::int32_t> kickstartCode = 0;
  std::optional<std::int32_t> printCode = 0;
  std::function<void()> onKickstart;  // the daemon comes up, or does not
  std::function<void()> onRegister;

  int registered = 0;
  int unregistered = 0;
  int kickstarts = 0;
  int settingsOpened = 0;

  [[nodiscard]] HelperStatus status() const override { return current; }
  Status registerDaemon() override;
  // Leaves the status at notRegistered.
  void unregisterDaemon(Completion<Status> done) override;
  std::optional<std::int32_t> kickstart() override;
  [[nodiscard]] std::optional<std::int32_t> printExitCode() const override { return printCode; }
  void openSettings() override { ++settingsOpened; }

 private:
  struct Ending {
    Completion<Status> done;
    Lease timer;
  };

  MainQueue& main_;
  std::list<Ending> endings_;
};

}  // namespace corvane
