// A whole Mac on virtual time: the real model, watcher and prompt over scripted ports, a helper that behaves as its
// data say, a person, and a diary of it all. It holds the rules that no day may break.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "background/deferral_watcher.h"
#include "core/policies/business_hours_gate.h"
#include "platform/scripted/scripted_application.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_helper_registration.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/scripted_running_applications.h"
#include "platform/scripted/scripted_surroundings.h"
#include "platform/scripted/virtual_time.h"
#include "presentation/deferral_prompt_controller.h"
#include "simulation/diary.h"
#include "simulation/person.h"
#include "simulation/simulated_helper.h"
#include "simulation/simulated_parts.h"

namespace corvane {

struct SimulatedMacPlan {
  std::string zone = "Europe/Berlin";
  std::string start = "2026-10-26 08:00";  // local
  std::vector<SimulatedApp> apps;
  PlistDict settings;  // of the organisation
  PlistDict state;     // what an earlier life of the program has stored
  Habits habits;
  std::optional<std::string> dailyCheck = "09:00";  // all applications are checked each day at this local time
  bool keepsLog = true;
};

// Single thread. Nothing runs but inside run, runUntil and sleepUntil.
class SimulatedMac {
 public:
  explicit SimulatedMac(const SimulatedMacPlan& plan);

  // "2026-10-26 09:00" of the simulated zone. A text that is no such moment ends the program: the plan is wrong.
  [[nodiscard]] Date at(std::string_view local) const;
  [[nodiscard]] Date now() const { return time_.now(); }

  // Awake all the time, or asleep until then. A moment that is not ahead only runs what is ready.
  void runUntil(std::string_view local) { runUntil(at(local)); }
  void runUntil(Date date);
  void run(Duration by);
  void sleepUntil(Date date);

  // The organisation changes one setting, or takes it away.
  void set(const std::string& key, PlistValue value);
  void unset(const std::string& key);
  // The vendor has a new version of it.
  void release(std::string_view label, std::string version);

  // What broke one of the rules, in order; empty as it should be:
  // - never two runs at once,
  // - nothing is installed that nobody asked for before its armed moment; nor within business hours, unless it was due
  //   outside of them or armed already for a moment within,
  // - no deferral is counted beyond the limit,
  // - no prompt opens with nothing in it, and no hard one without a moment ahead for its install.
  [[nodiscard]] const std::vector<std::string>& brokenRules() const { return brokenRules_; }

  [[nodiscard]] VirtualMachine& time() { return time_; }
  [[nodiscard]] PreferenceManager& preferences() { return preferences_; }
  [[nodiscard]] ScriptedPreferenceDomains& domains() { return domains_; }
  [[nodiscard]] ScriptedFocusState& focus() { return focus_; }
  [[nodiscard]] SimulatedFiles& files() { return files_; }
  [[nodiscard]] SimulatedHelper& helper() { return helper_; }
  [[nodiscard]] SimulatedLog& log() { return log_; }
  [[nodiscard]] StatusViewModel& model() { return *model_; }
  [[nodiscard]] DeferralWatcher& watcher() { return *watcher_; }
  [[nodiscard]] DeferralPromptController& prompt() { return *prompt_; }
  [[nodiscard]] Person& person() { return *person_; }
  [[nodiscard]] Diary& diary() { return diary_; }

 private:
  void store(const SimulatedMacPlan& plan);
  void planDailyCheck();
  void deliver();
  void noticed();
  void noticedPrompt();
  void noticedDeferral();
  void noticedCycle();
  void runStarted(const Labels& labels, int others);
  void runEnded(const Labels& installed, const Labels& failed);
  void broken(std::string_view rule);
  [[nodiscard]] BusinessHoursGate businessHours() const;
  [[nodiscard]] bool isWithinBusinessHours() const;

  CorvaneConstants places_{.root = "/simulated-mac", .home = "/simulated-mac/Users/ada"};
  ScriptedLocale locale_;
  VirtualMachine time_;
  Diary diary_{time_.clock(), locale_};
  SimulatedLog log_;
  ScriptedEntropy entropy_;
  SimulatedFiles files_{time_.clock(), places_.helperHeartbeat()};
  ScriptedRunningApplications processes_;
  ScriptedApplication application_;
  ScriptedPreferenceDomains domains_{time_.main()};
  NotificationCenter notifications_{time_.main()};
  PreferenceManager preferences_{domains_, notifications_, log_};
  ScriptedHelperRegistration registration_{time_.main()};
  ScriptedOwnBundle bundle_;
  HelperInstallationService installation_{
      {registration_, files_, bundle_, preferences_, time_.clock(), time_.main(), entropy_}, places_.helperHeartbeat()};
  HelperBackgroundPatchStateStore helperState_{places_.helperState(), files_, log_};
  HelperScheduledDiscoveryAppsStore scheduledApps_{places_.helperDiscoveredApps(), files_, log_};
  ReceiptManager receipts_{places_.receipts(), files_, log_};
  ReceiptsSnapshot snapshot_{receipts_, files_};
  LabelFailureHistoryCache failures_{snapshot_};
  LabelInstallHistoryCache installs_{snapshot_};
  LatestReceiptsCache latestReceipts_{snapshot_};
  DeferralEventManager deferralEvents_{places_.deferralEventsFolder(), "ada", files_, log_};
  SimulatedHelper helper_{time_.main(), time_.clock(), receipts_};
  SimulatedPanel panel_;
  NeutralParts neutral_{preferences_};
  SimulatedNotices notices_;
  ScriptedFocusState focus_;
  ScriptedPowerSource power_;
  NoInstallFacts installFacts_;
  WorkflowServices services_;

  std::optional<std::string> dailyCheck_;
  Lease nextCheck_;
  Lease settingsWatch_;
  std::int64_t askedGeneration_ = 0;
  std::uint64_t storedVersion_ = 0;  // of the stored values when they were last looked at
  std::int64_t hardCount_ = 0;
  bool mayInterrupt_ = false;  // what is due was due, or armed, before business hours could hold it
  CadenceState cycle_;
  std::vector<std::string> brokenRules_;
  std::unique_ptr<StatusViewModel> model_;
  Lease changes_;
  std::unique_ptr<DeferralPromptController> prompt_;
  std::unique_ptr<DeferralWatcher> watcher_;
  std::unique_ptr<Person> person_;
};

}  // namespace corvane
