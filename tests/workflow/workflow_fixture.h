// A whole workflow on virtual time, with a helper that answers to order and a folder tree as its Mac. After every
// step it holds the two rules that no flow may break.
#pragma once

#include <fmt/format.h>

#include <fstream>

#include "core/client/helper_installation_service.h"
#include "core/records/notifications.h"
#include "platform/scripted/scripted_application.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_helper_registration.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/scripted_running_applications.h"
#include "platform/scripted/scripted_surroundings.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/scripted_service_client.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "workflow/neutral_parts.h"
#include "workflow/status_view_model.h"

namespace corvane {

inline Label label(const char* name) { return Label(name); }

struct AppSpec {
  const char* label;
  const char* installed = "1.0";  // null: not installed
  const char* latest = nullptr;
};
inline AppInfo makeApp(const AppSpec& spec) {
  AppInfo app;
  app.label = Label(spec.label);
  app.name = std::string("The ") + spec.label;
  if (spec.installed != nullptr) app.currentVersion = spec.installed;
  if (spec.latest != nullptr) app.newVersion = spec.latest;
  return app;
}
inline AppInfo outdated(const char* name) { return makeApp({.label = name, .latest = "2.0"}); }
inline AppInfo failedCheck(const char* name) {
  auto app = outdated(name);
  app.updateCheckFailed = true;
  return app;
}
inline AppInfo current(const char* name) { return makeApp({.label = name, .latest = "1.0"}); }
inline AppInfo unchecked(const char* name) { return makeApp({.label = name}); }

struct RecordingSignals final : UsageSignals {
  std::vector<UsageSignal> sent;
  void send(const UsageSignal& signal) override { sent.push_back(signal); }
  [[nodiscard]] const UsageSignal* find(std::string_view name) const {
    for (const auto& signal : sent)
      if (signal.name == name) return &signal;
    return nullptr;
  }
};

struct CountingPresenter final : PromptPresenter {
  int shown = 0;
  int hidden = 0;
  void showStandaloneWindow() override { ++shown; }
  void hideStandaloneWindow() override { ++hidden; }
};

// Writes down what the user would hear, and keeps the count that the real one keeps.
struct RecordingNotices final : DeferralNotices {
  explicit RecordingNotices(PreferenceManager& store) : store(store) {}
  PreferenceManager& store;
  std::vector<std::string> told;
  std::vector<std::string> updates;  // one for each time that what counts set off came to its end
  std::function<void()> onUpdates;
  int remindersCancelled = 0;
  void notifyUpdatesAvailable(const UpdatesAvailable& news) override {
    updates.push_back(fmt::format("{} of {} open{}{}", news.open, news.total,
                                  news.closedAppsHandledElsewhere ? ", closed elsewhere" : "",
                                  news.closedAppsWaitForACPower ? ", closed wait" : ""));
    NeutralParts::Notices(store).notifyUpdatesAvailable(news);
    if (onUpdates) onUpdates();
  }
  void dismissUpdateNotifications(Task done) override {
    told.emplace_back("dismissed");
    if (done) done();
  }
  void notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total, bool elsewhere) override {
    told.push_back(fmt::format("timed out, {} of {} open{}", open, total, elsewhere ? ", closed elsewhere" : ""));
  }
  void notifyDeferralEnded(std::int64_t pending) override { told.push_back(fmt::format("ended, {} pending", pending)); }
  void scheduleReminders(Date, std::int64_t pending) override {
    told.push_back(fmt::format("reminders of {}", pending));
  }
  void cancelReminders() override { ++remindersCancelled; }
};

struct ScriptedInstallFacts final : LabelInstallFactsSource {
  std::map<Label, LabelInstallFacts> known;
  [[nodiscard]] LabelInstallFacts installFacts(const Label& label) const override {
    const auto facts = known.find(label);
    return facts == known.end() ? LabelInstallFacts() : facts->second;
  }
};

// Keeps the request until it is answered, or does at once what a test tells it to.
struct ScriptedPatcher final : ClosedAppsPatcher {
  ~ScriptedPatcher() override { waiting.abandon(); }
  int asked = 0;
  std::function<std::optional<ClosedAppsOutcome>()> onAsked;  // an answer within the call
  Completion<ClosedAppsOutcome> waiting;
  void patchClosedApps(Completion<ClosedAppsOutcome> done) override {
    ++asked;
    if (const auto answer = onAsked ? onAsked() : std::nullopt) return done(*answer);
    waiting = std::move(done);
  }
};

struct CountingDisplay final : SelfUpdateDisplay {
  int lookedUp = 0;
  void lookUp(const Apps&) override { ++lookedUp; }
};

struct WorkflowTest : ::testing::Test {
  WorkflowTest() {
    helper.generation = [this] { return model ? model->fields().discovery.discoveryGeneration : 0; };
    std::filesystem::create_directories(places.root / "Applications");
    (void)files.makeFolders(places.deferralEventsFolder());
    setHelperAlive(true);
    setScript(true);
    manage({});
  }

  // What the organisation sets. Updates are not downloaded ahead unless it says so, which leaves the helper's runs to
  // the flow under test.
  void manage(PlistDict settings) {
    settings.try_emplace("WorkflowStageUpdates", PlistValue(false));
    domains.setManaged(std::move(settings));
  }

  void build() {
    model.reset();
    model = std::make_unique<StatusViewModel>(services);
    model->begin();
    settle();
  }
  void buildWith(const Apps& apps) {
    preferences.writeDiscoveredApps(apps);
    preferences.writePreference("LastDiscoveryDate", time.now() - 24h);
    build();
  }

  void setHelperAlive(bool alive) {
    registration.current = alive ? HelperStatus::enabled : HelperStatus::notRegistered;
    if (alive) files.put(places.helperHeartbeat(), "");
  }
  void setScript(bool present) {
    if (present)
      files.put(places.installomatorScript(), "#!/bin/zsh\n");
    else
      (void)files.remove(places.installomatorScript());
  }
  // A label that finds `bundle` in /Applications, and the bundle itself, for scans of the tree.
  void writeLabel(const std::string& name) const {
    std::filesystem::create_directories(places.labelsFolder());
    std::ofstream(places.labelsFolder() / (name + ".sh"))
        << name << ")\n    name=\"" << name << "\"\n    type=\"dmg\"\n    expectedTeamID=\"ABCDE12345\"\n    ;;\n";
  }
  void writeBundle(const std::string& name, const std::string& version) const {
    const auto contents = places.root / "Applications" / (name + ".app") / "Contents";
    std::filesystem::create_directories(contents);
    std::ofstream(contents / "Info.plist")
        << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
        << "<key>CFBundleShortVersionString</key><string>" << version << "</string></dict></plist>";
  }
  void rememberInventory() {
    preferences.writeLastInventoryFingerprint(AppDiscoveryService::fingerprintInstalledApps(places, log));
  }

  void completeCycle() {
    preferences.writePatchingCadenceState({.currentPatchingStartDate = time.now() - 48h,
                                           .lastPatchingCompletionDate = time.now() - 1h,
                                           .nextCycleStartDate = time.now() + 72h});
  }
  void fail(const char* name, int times, const char* target = "2.0", std::int64_t code = 2) {
    for (int i = 0; i < times; ++i)
      ASSERT_TRUE(receipts.append({.label = Label(name),
                                   .timestamp = time.now() - 1h + std::chrono::minutes(i),
                                   .status = PatchingStatus::failure,
                                   .targetVersion = target,
                                   .installomatorExitCode = code}));
  }

  // Runs what is ready; then two runs of ours at once, and an idle gate while a check is out, are failures.
  void settle() {
    time.runUntilIdle();
    checkInvariants();
  }
  void advance(Duration by) {
    time.advance(by);
    checkInvariants();
  }
  void checkInvariants() {
    if (!model) return;
    const auto& fields = model->fields();
    const auto ownRuns = std::ranges::count_if(helper.runs, [](const auto& run) { return !run.labels.empty(); });
    EXPECT_LE(ownRuns, 1) << "two runs of this process at once";
    for (const auto& call : helper.discoveries) {
      const bool counts = call.generation == fields.discovery.discoveryGeneration;
      EXPECT_TRUE(fields.gate.isLoading || !counts) << "an idle gate while a check is out";
    }
  }

  void answer(Result<Apps> apps, std::size_t index = 0) {
    settle();
    helper.answerDiscovery(std::move(apps), index);
    settle();
  }
  void checkFinds(const Apps& apps) {
    model->checkForUpdates();
    answer(apps);
  }
  [[nodiscard]] Labels running() const {
    EXPECT_EQ(helper.runs.size(), 1U);
    return helper.runs.empty() ? Labels() : helper.runs.front().labels;
  }
  void answerRun(Result<PatchRunAnswer> result, std::size_t index = 0) {
    settle();
    helper.answerRun(std::move(result), index);
    settle();
  }

  // The model wrote a line that begins so.
  [[nodiscard]] bool said(std::string_view line) const { return log.holds("StatusViewModel: " + std::string(line)); }
  [[nodiscard]] const StatusFields& fields() const { return model->fields(); }
  [[nodiscard]] std::string status() const { return fields().messages.statusMessage.value_or("<none>"); }
  [[nodiscard]] std::string error() const { return fields().messages.errorMessage.value_or("<none>"); }

  testing::TemporaryFolder folder;
  CorvaneConstants places{.root = folder.path(), .home = folder.path() / "Users/ada"};
  VirtualMachine time;
  ScriptedLocale locale;
  ScriptedEntropy entropy;
  RecordingLog log;
  ScriptedFiles files{time.clock()};
  ScriptedRunningApplications processes;
  ScriptedApplication application;
  ScriptedPreferenceDomains domains{time.main()};
  NotificationCenter notifications{time.main()};
  PreferenceManager preferences{domains, notifications, log};
  ScriptedHelperRegistration registration{time.main()};
  ScriptedOwnBundle bundle;
  HelperInstallationService installation{{registration, files, bundle, preferences, time.clock(), time.main(), entropy},
                                         places.helperHeartbeat()};
  HelperBackgroundPatchStateStore helperState{places.helperState(), files, log};
  HelperScheduledDiscoveryAppsStore scheduledApps{places.helperDiscoveredApps(), files, log};
  ReceiptManager receipts{places.receipts(), files, log};
  ReceiptsSnapshot snapshot{receipts, files};
  LabelFailureHistoryCache failures{snapshot};
  LabelInstallHistoryCache installs{snapshot};
  LatestReceiptsCache latestReceipts{snapshot};
  DeferralEventManager deferralEvents{places.deferralEventsFolder(), "ada", files, log};
  ScriptedServiceClient helper{time.main()};
  CountingPresenter prompts;
  RecordingNotices notices{preferences};
  ScriptedPatcher patcher;
  ScriptedFocusState focus;
  ScriptedPowerSource power;
  ScriptedInstallFacts installFacts;
  RecordingSignals signals;
  CountingDisplay display;
  WorkflowServices services{time.main(), time.work(),    time.clock(), locale,       entropy,        notifications,
                            log,         files,          processes,    application,  focus,          power,
                            places,      preferences,    helper,       installation, helperState,    scheduledApps,
                            receipts,    deferralEvents, failures,     installs,     latestReceipts, installFacts,
                            prompts,     notices,        signals,      display};
  std::unique_ptr<StatusViewModel> model;
};

}  // namespace corvane
