// The settings window in time: it owns the models for as long as the window lives, takes what a person does there, and
// publishes the page.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "base/error.h"
#include "base/lease.h"
#include "base/observers.h"
#include "base/task.h"
#include "core/records/usage_signals.h"
#include "platform/own_bundle.h"
#include "platform/user_notifications.h"
#include "presentation/settings_page.h"
#include "settings/login_agent_settings.h"
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
};

// Main thread. Made when the window opens, gone when it closes: edits that were not saved go with it.
class SettingsController final : public SettingsActions {
 public:
  SettingsController(StatusViewModel& model, const WorkflowServices& services, SettingsParts parts);
  ~SettingsController() override;
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
  struct Models;

  SettingsPage page_;
  Observers observers_;
  std::unique_ptr<Models> models_;
};

}  // namespace corvane
