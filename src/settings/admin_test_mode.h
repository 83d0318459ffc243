// Forces states of the deferral workflow, so that an administrator can try it out. It writes the stored state itself,
// past the guards of a cycle; without AdminTestModeEnabled nothing of it can be reached.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/date.h"
#include "base/lease.h"
#include "core/logging/logging_service.h"
#include "platform/user_notifications.h"
#include "workflow/status_view_model.h"

namespace corvane {

struct AdminTestState {
  Date anchorOverride;
  Date nextLaunchOverride;
  std::int64_t focusCount = 0;
  std::int64_t hardCount = 0;
  std::optional<std::string> lastActionMessage;  // localised
  friend bool operator==(const AdminTestState&, const AdminTestState&) = default;
};

// Main thread. Each operation but those of dates and counters leaves a line in the state.
class AdminTestMode {
 public:
  // All outlive the object.
  AdminTestMode(StatusViewModel& model, const WorkflowServices& services, UserNotifications& center);

  [[nodiscard]] const AdminTestState& state() const { return state_; }
  // Reads the counters anew; the dates stay as the person chose them.
  void refresh();

  void triggerUpdateAll();
  void triggerHardDeadlinePrompt();
  void postTestNotification();
  void resetDeferralState();
  void setNextLaunch(Date date) { state_.nextLaunchOverride = date; }
  void applyNextLaunch();
  void setFocusCount(std::int64_t count);
  void setHardCount(std::int64_t count);
  void setAnchor(Date date) { state_.anchorOverride = date; }
  void applyAnchor();
  void useConfiguredCadence();

 private:
  void done(std::string_view message);
  void deadlinesFrom(const CadenceState& state);

  StatusViewModel& model_;
  WorkflowServices s_;
  UserNotifications& center_;
  AdminTestState state_;
};

}  // namespace corvane
