// The settings window in time: it owns the models for as long as the window lives, takes what a person does there, and
// publishes the page.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "base/observers.h"
#include "base/task.h"
#include "core/records/usage_signals.h"
#include "platform/own_bundle.h"
#include "platform/user_notifications.h"
#include "presentation/settings_page.h"
#include "presentation/settings_parts.h"
#include "settings/about_settings.h"
#include "settings/admin_test_mode.h"
#include "settings/login_agent_settings.h"
#include "settings/settings_view_model.h"
#include "workflow/status_view_model.h"

namespace corvane {

// What the window uses beside the workflow's services. All of it outlives the controller; what is absent takes its
// controls with it.
struct SettingsParts {
  TelemetrySwitch& telemetry;
  UserNotifications& center;
  OwnBundle& bundle;
  LoginAgentSettings* loginAgent = nullptr;
  // Makes a bundle and answers once, on the main thread, with its file; also after the window has gone.
  std::function<void(Completion<Result<std::filesystem::path>>)> generateDiagnostics;
  // Shows a file where it lies.
  std::function<void(const std::filesystem::path&)> revealFile;
  // Opens a web address in the user's browser.
  std::function<void(const std::string&)> openAddress;
};

// Main thread. Made when the window opens, gone when it closes: edits that were not saved go with it.
class SettingsController final : public SettingsActions {
 public:
  // How often the helper is looked at while the window stands.
  static constexpr Duration kLook = 5s;

  SettingsController(StatusViewModel& model, const WorkflowServices& services, SettingsParts parts);
  SettingsController(const SettingsController&) = delete;
  SettingsController& operator=(const SettingsController&) = delete;

  [[nodiscard]] const SettingsPage& page() const { return page_; }
  // Called in a later turn after the page changed, once however much did.
  [[nodiscard]] Lease observe(std::function<void()> changed) { return observers_.add(std::move(changed)); }

  void selectTab(const std::string& key) override;
  void set(const std::string& key, const std::string& value) override;
  void step(const std::string& key, std::int64_t steps) override;
  void switchOn(const std::string& key, bool on) override;
  void reveal(const std::string& key, bool revealed) override;
  void press(const std::string& key) override;
  void answer(bool yes) override;
  void save() override;

 private:
  void changed();
  void publish();
  [[nodiscard]] bool isOpen(const std::string& key) const;
  [[nodiscard]] const SettingsControl* find(const std::string& key) const;
  void setDate(const std::string& key, const std::string& value);
  void pressOfTestMode(const std::string& key);

  WorkflowServices services_;
  SettingsParts parts_;
  SettingsViewModel settings_;
  AboutSettings about_;
  std::optional<AdminTestMode> admin_;  // absent while the mode is off: none of it can be reached then
  SettingsWindowState window_;
  std::map<std::string, std::int64_t, std::less<>> lastLimits_;  // of steppers that were switched off
  SettingsPage page_;
  bool isPublishing_ = false;
  Observers observers_;
  Lease workflow_;
  Lease nextLook_;
  Lifeline lifeline_;
};

}  // namespace corvane
