#include "settings/admin_test_mode.h"

#include "base/localized.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/patching_cadence_manager.h"
#include "core/preferences/display_title.h"

namespace corvane {

AdminTestMode::AdminTestMode(StatusViewModel& model, const WorkflowServices& services, UserNotifications& center)
    : model_(model), s_(services), center_(center) {
  const auto stored = s_.preferences.moment();
  const auto now = s_.clock.now();
  state_.anchorOverride = stored->cadence.currentPatchingStartDate.value_or(now);
  state_.nextLaunchOverride = stored->nextAutoLaunch.value_or(now);
  refresh();
}

void AdminTestMode::refresh() {
  const auto info = s_.preferences.readDeferralInfo();
  state_.focusCount = info.focusDeferralCount;
  state_.hardCount = info.hardDeferralCount;
}

void AdminTestMode::done(std::string_view message) { state_.lastActionMessage = localized(message); }

void AdminTestMode::triggerUpdateAll() {
  model_.updateAll(DeferralPromptHost::settings);
  done(toLocalize("Triggered Update All."));
}

void AdminTestMode::triggerHardDeadlinePrompt() {
  s_.preferences.writePreference("HardDeferralDate", s_.clock.now() - 1s);
  model_.updateAll(DeferralPromptHost::standalone);
  done(toLocalize("Set HardDeferralDate to past and triggered the standalone deadline dialog."));
}

void AdminTestMode::postTestNotification() {
  const AppDisplayTitle title(s_.preferences.loadConfiguration());
  center_.add({.identifier = "admin-test-mode-" + s_.entropy.uuid().text(),
               .title = title.userFacing(localized("[TEST] Corvane")),
               .body = localized("Admin test notification."),
               .header = title.current(),
               .sound = false,
               .categoryIdentifier = {},
               .userInfo = {},
               .delay = {}},
              [log = Logger(s_.log, "AdminTestModeView")](const Status& delivered) {
                if (!delivered) log.error("Failed to deliver test notification: " + delivered.error().text);
              });
  done(toLocalize("Posted test notification."));
}

void AdminTestMode::resetDeferralState() {
  DeferralManager(s_.preferences.loadConfiguration(), s_.preferences, s_.clock, s_.locale.calendar())
      .resetDeferralCounts();
  refresh();
  model_.refreshDeadlineDisplay();
  done(toLocalize("Reset deferral state."));
}

// What it stands for stays what it was: only the moment is another.
void AdminTestMode::applyNextLaunch() {
  const auto stored = s_.preferences.moment();
  s_.preferences.writeNextAutoLaunch(state_.nextLaunchOverride, stored->automaticFocusDeferralArmed,
                                     stored->patchErrorRetryArmed);
  done(toLocalize("Updated next auto-launch."));
}

void AdminTestMode::setFocusCount(std::int64_t count) {
  s_.preferences.writePreference("FocusDeferralCount", count);
  refresh();
}

void AdminTestMode::setHardCount(std::int64_t count) {
  s_.preferences.writePreference("HardDeferralCount", count);
  refresh();
}

void AdminTestMode::applyAnchor() {
  auto state = s_.preferences.readPatchingCadenceState();
  state.currentPatchingStartDate = state_.anchorOverride;
  s_.preferences.writePatchingCadenceState(state);
  s_.preferences.writePreference("AdminTestModeAnchorOverrideActive", true);
  deadlinesFrom(state);
  done(toLocalize("Updated patch cycle anchor and deadlines."));
}

void AdminTestMode::useConfiguredCadence() {
  const PatchingCadenceManager cadence(s_.preferences.loadConfiguration(), s_.locale.calendar());
  const auto state = cadence.armedState(s_.clock.now());
  s_.preferences.writePatchingCadenceState(state);
  s_.preferences.deletePreference("AdminTestModeAnchorOverrideActive");
  state_.anchorOverride = state.currentPatchingStartDate.value_or(state_.anchorOverride);
  deadlinesFrom(state);
  done(toLocalize("Restored the configured patch cadence and deadlines."));
}

void AdminTestMode::deadlinesFrom(const CadenceState& state) {
  const auto config = s_.preferences.loadConfiguration();
  const auto calendar = s_.locale.calendar();
  DeferralManager(config, s_.preferences, s_.clock, calendar)
      .seedDeadlineDatesFromAnchor(*state.currentPatchingStartDate,
                                   PatchingCadenceManager(config, calendar).endOf(state));
  model_.refreshDeadlineDisplay();
  model_.recomputeCounts();
}

}  // namespace corvane
