#include "presentation/settings_controller.h"

#include <algorithm>
#include <array>
#include <utility>

namespace corvane {
namespace {

constexpr bool isTyped(ControlKind kind) {
  return kind == ControlKind::text || kind == ControlKind::secret || kind == ControlKind::multiline ||
         kind == ControlKind::timeOfDay;
}

struct AdminAction {
  std::string_view key;
  void (AdminTestMode::*act)();
};
constexpr auto kAdminActions = std::to_array<AdminAction>({
    {SettingsKeys::updateAll, &AdminTestMode::triggerUpdateAll},
    {SettingsKeys::hardPrompt, &AdminTestMode::triggerHardDeadlinePrompt},
    {SettingsKeys::testNotification, &AdminTestMode::postTestNotification},
    {SettingsKeys::resetDeferrals, &AdminTestMode::resetDeferralState},
    {SettingsKeys::applyNextLaunch, &AdminTestMode::applyNextLaunch},
    {SettingsKeys::applyAnchor, &AdminTestMode::applyAnchor},
    {SettingsKeys::configuredCadence, &AdminTestMode::useConfiguredCadence},
});

}  // namespace

SettingsController::SettingsController(StatusViewModel& model, const WorkflowServices& services, SettingsParts parts)
    : services_(services),
      parts_(std::move(parts)),
      settings_({services.preferences, services.notifications, parts_.telemetry, services.clock, services.log}),
      about_({services.installation, services.preferences, services.notifications, services.files, services.places,
              parts_.bundle, services.signals, services.log, parts_.loginAgent, parts_.generateDiagnostics},
             [this] { changed(); }) {
  if (services_.preferences.readAdminTestModeEnabled()) admin_.emplace(model, services_, parts_.center);
  workflow_ = model.observe([this] {
    about_.refresh();
    if (admin_) admin_->refresh();
    changed();
  });
  nextLook_ = services_.main.every(kLook, [this] { about_.refresh(); });
  publish();
}

void SettingsController::changed() {
  if (std::exchange(isPublishing_, true)) return;
  services_.main.post(lifeline_.guard([this] {
    isPublishing_ = false;
    publish();
  }));
}

void SettingsController::publish() {
  const AppDisplayTitle title(services_.preferences.loadConfiguration());
  auto page = makeSettingsPage({.model = settings_,
                                .about = about_.state(),
                                .admin = admin_ ? &admin_->state() : nullptr,
                                .window = window_,
                                .locale = services_.locale,
                                .title = title,
                                .canRevealFiles = static_cast<bool>(parts_.revealFile)});
  if (page == page_) return;
  page_ = std::move(page);
  observers_.tell();
}

const SettingsControl* SettingsController::find(const std::string& key) const {
  for (const auto& section : page_.sections)
    for (const auto& control : section.controls)
      if (control.key == key) return &control;
  return nullptr;
}

// What is not on the page, or stands there for reading alone, cannot be changed by its key.
bool SettingsController::isOpen(const std::string& key) const {
  const auto* control = find(key);
  return control != nullptr && control->enabled;
}

void SettingsController::selectTab(const std::string& key) {
  if (std::ranges::count(page_.tabs, key, &SettingsTab::key) == 0) return;
  window_.selectedTab = key;
  about_.refresh();
  changed();
}

void SettingsController::set(const std::string& key, const std::string& value) {
  const auto* control = find(key);
  if (control == nullptr || !control->enabled) return;
  const bool on = value == "true";
  if (control->kind == ControlKind::date) {
    setDate(key, value);
  } else if (isTyped(control->kind)) {
    window_.drafts[key] = settings_.setText(key, value);
  } else if (key == SettingsKeys::advancedOptions) {
    window_.showsAdvancedOptions = on;
  } else if (key == SettingsKeys::businessHours) {
    settings_.holdBusinessHours(on);
    window_.drafts.erase("BusinessHoursStartTime");
    window_.drafts.erase("BusinessHoursEndTime");
  } else if (key == SettingsKeys::menuBarIcon) {
    about_.setShowMenuBarIcon(on);
  } else if (key == SettingsKeys::openAtLogin) {
    about_.chooseLoginAgent(on, about_.state().keepAlive);
  } else if (key == SettingsKeys::keepAlive) {
    about_.chooseLoginAgent(about_.state().openAtLogin, on);
  } else if (control->kind == ControlKind::toggle) {
    settings_.setValue(key, on);
  } else if (control->kind == ControlKind::picker &&
             std::ranges::count(control->choices, value, &ControlChoice::value) > 0) {
    const bool isNumber = settings_.value(key).integer().has_value();
    settings_.setValue(key, isNumber ? PlistValue(std::int64_t{std::stoll(value)}) : PlistValue(value));
  }
  changed();
}

void SettingsController::setDate(const std::string& key, const std::string& value) {
  window_.drafts[key] = value;
  const auto date = dateFromField(value, services_.locale.calendar());
  if (!date || !admin_) return;
  if (key == SettingsKeys::nextLaunch) admin_->setNextLaunch(*date);
  if (key == SettingsKeys::anchor) admin_->setAnchor(*date);
}

void SettingsController::step(const std::string& key, std::int64_t steps) {
  const auto* rule = findStepper(key);
  if (rule == nullptr || !isOpen(key)) return;
  if (admin_ && key == SettingsKeys::focusCount)
    admin_->setFocusCount(stepped(*rule, admin_->state().focusCount, steps));
  else if (admin_ && key == SettingsKeys::hardCount)
    admin_->setHardCount(stepped(*rule, admin_->state().hardCount, steps));
  else if (const auto value = settings_.value(key).integer())
    settings_.setValue(key, stepped(*rule, *value, steps));
  changed();
}

// Switched on again, a limit is what it was.
void SettingsController::switchOn(const std::string& key, bool on) {
  const auto* rule = findStepper(key);
  if (rule == nullptr || !rule->hasOffState || !isOpen(key)) return;
  const auto value = settings_.value(key).integer();
  if (on && !value) {
    const auto last = lastLimits_.find(key);
    settings_.setValue(key, last == lastLimits_.end() ? rule->range.least : last->second);
  } else if (!on && value) {
    lastLimits_[key] = *value;
    settings_.setValue(key, PlistValue());
  }
  changed();
}

// Looking is allowed where changing is not.
void SettingsController::reveal(const std::string& key, bool revealed) {
  const auto* control = find(key);
  if (control == nullptr || control->revealText.empty()) return;
  if (revealed)
    window_.revealed.insert(key);
  else
    window_.revealed.erase(key);
  changed();
}

void SettingsController::press(const std::string& key) {
  if (!isOpen(key)) return;
  if (const auto& control = *find(key); control.kind == ControlKind::link && parts_.openAddress)
    parts_.openAddress(control.value);
  if (key == SettingsKeys::loginItems) services_.installation.openLoginItemsSettings();
  if (key == SettingsKeys::resetHelper) about_.askToResetHelper();
  if (key == SettingsKeys::generateBundle) about_.generateDiagnosticBundle();
  if (key == SettingsKeys::revealBundle && parts_.revealFile && about_.state().diagnosticBundleURL)
    parts_.revealFile(*about_.state().diagnosticBundleURL);
  if (admin_) pressOfTestMode(key);
  changed();
}

void SettingsController::pressOfTestMode(const std::string& key) {
  const auto action = std::ranges::find(kAdminActions, key, &AdminAction::key);
  if (action == kAdminActions.end()) return;
  window_.drafts.erase(std::string(SettingsKeys::nextLaunch));
  window_.drafts.erase(std::string(SettingsKeys::anchor));
  ((*admin_).*(action->act))();
}

void SettingsController::answer(bool yes) { about_.answerReset(yes); }

void SettingsController::save() {
  if (settings_.isSettingsLocked()) return;
  settings_.save();
  window_.drafts.clear();
  changed();
}

}  // namespace corvane
