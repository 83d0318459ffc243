// What the About tab knows and does by itself: the helper, the tool, the diagnostic bundle, and the choices that take
// effect without a save.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "base/date.h"
#include "base/error.h"
#include "base/lifeline.h"
#include "base/notification_center.h"
#include "base/task.h"
#include "core/client/helper_installation_service.h"
#include "core/discovery/tool_version.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "core/preferences/preference_manager.h"
#include "core/records/usage_signals.h"
#include "platform/files.h"
#include "platform/own_bundle.h"
#include "settings/login_agent_settings.h"

namespace corvane {

struct AboutState {
  std::string version;                       // "4.0.0 (400)"
  std::optional<std::string> systemVersion;  // of macOS; absent where the system has no such file
  HelperStatus helperStatus = HelperStatus::unknown;
  bool helperOperational = false;
  std::optional<std::string> installomatorVersion;  // absent: no script, or one that states none
  std::optional<std::string> installomatorVersionDate;
  bool showResetHelperConfirmation = false;
  bool resetHelperInProgress = false;
  std::optional<std::string> resetHelperMessage;
  bool resetHelperWasSuccessful = false;
  bool canGenerateDiagnostics = false;
  bool diagnosticInProgress = false;
  std::optional<std::filesystem::path> diagnosticBundleURL;
  std::optional<std::string> diagnosticErrorMessage;
  bool hasLoginAgent = false;  // this build has one
  bool openAtLogin = false;
  bool keepAlive = false;
  bool organizationLaunchAgentInstalled = false;
  bool showMenuBarIcon = true;
  friend bool operator==(const AboutState&, const AboutState&) = default;
};

// Main thread.
class AboutSettings {
 public:
  using GenerateDiagnostics = std::function<void(Completion<Result<std::filesystem::path>>)>;

  // All outlive the object.
  struct Services {
    HelperInstallationService& installation;
    PreferenceManager& preferences;
    NotificationCenter& notifications;
    const Files& files;
    const CorvaneConstants& places;
    const OwnBundle& bundle;
    UsageSignals& signals;
    LogSink& log;
    LoginAgentSettings* loginAgent = nullptr;  // null: this build has none
    GenerateDiagnostics generateDiagnostics;   // empty: nobody makes one
  };
  // `changed` whenever the state has changed by itself or by one of the operations.
  AboutSettings(Services services, std::function<void()> changed);

  [[nodiscard]] const AboutState& state() const { return state_; }
  // Looks at the helper, the script and the agent again.
  void refresh();

  void askToResetHelper();
  // The answer to that question; a no is all that closes it without effect. How a reset ends stands in the state. One
  // that is still out when the window closes ends by itself.
  void answerReset(bool yes);

  // One at a time. A bundle that is made after the window has closed is logged and counted all the same.
  void generateDiagnosticBundle();

  void setShowMenuBarIcon(bool show);
  void chooseLoginAgent(bool openAtLogin, bool keepAlive);

 private:
  void look();
  void lookAtTool();
  void resetHelper();
  void resetEnded(Uuid token, const Result<HelperResetResult>& answer);
  void bundleEnded(const Result<std::filesystem::path>& bundle);

  Services s_;
  Logger log_;
  std::function<void()> changed_;
  AboutState state_;
  std::optional<Date> toolRead_;  // as it was changed last then
  Lifeline lifeline_;
};

}  // namespace corvane
