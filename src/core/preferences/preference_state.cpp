// The state operations that read, write or clear a single key of their own name.
#include "core/preferences/preference_manager.h"

namespace corvane {

std::optional<Date> PreferenceManager::readAppLastDiscoveryDate() const {
  return readOptional<Date>("LastDiscoveryDate");
}
std::optional<Date> PreferenceManager::readAppLastUpdateCheckDate() const {
  return readOptional<Date>("LastUpdateCheckDate");
}
std::optional<std::string> PreferenceManager::readLastInventoryFingerprint() const {
  return readOptional<std::string>("LastInventoryFingerprint");
}
std::optional<Date> PreferenceManager::readLastAutoHelperResetDate() const {
  return readOptional<Date>("LastAutoHelperResetDate");
}
std::optional<std::string> PreferenceManager::readLastObservedHelperPatchRunID() const {
  return readOptional<std::string>("LastObservedHelperPatchRunID");
}
std::optional<std::string> PreferenceManager::readLastObservedScheduledDiscoveryRunID() const {
  return readOptional<std::string>("LastObservedScheduledDiscoveryRunID");
}
std::optional<Date> PreferenceManager::readLastBackgroundPatchDate() const {
  return readOptional<Date>("LastBackgroundPatchDate");
}
std::optional<Date> PreferenceManager::readLastSelfUpdateCheckDate() const {
  return readOptional<Date>("LastSelfUpdateCheckDate");
}
bool PreferenceManager::readFirstRunSetupCompleted() const {
  return readPreference("FirstRunSetupCompleted", defaultFlag("FirstRunSetupCompleted"));
}
bool PreferenceManager::readManagedSilentLaunchEnabled() const {
  return readPreference("ManagedSilentLaunchEnabled", defaultFlag("ManagedSilentLaunchEnabled"));
}
bool PreferenceManager::readMenuBarHideQuit() const {
  return readPreference("MenuBarHideQuit", defaultFlag("MenuBarHideQuit"));
}
bool PreferenceManager::readMenuBarConcealAdvancedActions() const {
  return readPreference("MenuBarConcealAdvancedActions", defaultFlag("MenuBarConcealAdvancedActions"));
}
bool PreferenceManager::readAdminTestModeEnabled() const {
  return readPreference("AdminTestModeEnabled", defaultFlag("AdminTestModeEnabled"));
}
std::int64_t PreferenceManager::readLastNotifiedPendingUpdatesCount() const {
  return readPreference("LastNotifiedPendingUpdatesCount", defaultInteger("LastNotifiedPendingUpdatesCount"));
}
std::int64_t PreferenceManager::readLastNotifiedACPowerRequiredCount() const {
  return readPreference("LastNotifiedACPowerRequiredCount", defaultInteger("LastNotifiedACPowerRequiredCount"));
}
void PreferenceManager::writeLastInventoryFingerprint(const std::string& fingerprint) {
  writePreference("LastInventoryFingerprint", fingerprint);
}
void PreferenceManager::writeHardDeadlineDialogDismissedUntil(Date date) {
  writePreference("HardDeadlineDialogDismissedUntil", date);
}
void PreferenceManager::writeLastHardDeadlineFiredAt(Date date) { writePreference("LastHardDeadlineFiredAt", date); }
void PreferenceManager::writeLastNotifiedPendingUpdatesCount(std::int64_t count) {
  writePreference("LastNotifiedPendingUpdatesCount", count);
}
void PreferenceManager::writeLastNotifiedACPowerRequiredCount(std::int64_t count) {
  writePreference("LastNotifiedACPowerRequiredCount", count);
}
void PreferenceManager::writeLastAutoHelperResetDate(Date date) { writePreference("LastAutoHelperResetDate", date); }
void PreferenceManager::writeLastObservedHelperPatchRunID(const std::string& runID) {
  writePreference("LastObservedHelperPatchRunID", runID);
}
void PreferenceManager::writeLastObservedScheduledDiscoveryRunID(const std::string& runID) {
  writePreference("LastObservedScheduledDiscoveryRunID", runID);
}
void PreferenceManager::writeLastBackgroundPatchDate(Date date) { writePreference("LastBackgroundPatchDate", date); }
void PreferenceManager::writeLastSelfUpdateCheckDate(Date date) { writePreference("LastSelfUpdateCheckDate", date); }
void PreferenceManager::writeFirstRunSetupCompleted(bool completed) {
  writePreference("FirstRunSetupCompleted", completed);
}
void PreferenceManager::clearPatchErrorRetryArmed() { deletePreference("PatchErrorRetryArmed"); }
void PreferenceManager::clearHardDeadlineDialogDismissedUntil() {
  deletePreference("HardDeadlineDialogDismissedUntil");
}
void PreferenceManager::clearLastHardDeadlineFiredAt() { deletePreference("LastHardDeadlineFiredAt"); }
void PreferenceManager::clearUpdateAllErrorClearedLabels() { deletePreference("UpdateAllErrorClearedLabels"); }
void PreferenceManager::clearLastAutoHelperResetDate() { deletePreference("LastAutoHelperResetDate"); }

}  // namespace corvane
