// What a scene writes, read back as the application reads it: the policies must find the state that its words say.
#include "sample/scenes.h"

#include <array>

#include "base/notification_center.h"
#include "core/history/receipt_manager.h"
#include "core/places.h"
#include "core/policies/calendar_days.h"
#include "core/policies/deferral_limit_summary.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/error_retry_watch.h"
#include "core/policies/installomator_exit_code.h"
#include "core/policies/patching_cadence_manager.h"
#include "core/preferences/preference_manager.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_preference_domains.h"
#include "platform/scripted/virtual_time.h"
#include "sample/sample_mac.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::sample {
namespace {

AppInfo app(const char* label, const char* installed, const char* latest) {
  AppInfo info;
  info.label = Label(label);
  info.name = label;
  info.currentVersion = installed;
  info.newVersion = latest;
  return info;
}

// A start of the programs at a moment: what they read of what lies on the sample.
struct Start {
  Start(const CorvaneConstants& places, Date now, const Calendar& zone)
      : machine(now),
        calendar(zone),
        domains({.user = places.userPreferencesPath(), .managed = places.managedPreferencesPath()},
                [this](std::string_view line) { log.write(LogLevel::warning, line); }),
        preferences(domains, notifications, log),
        config(preferences.loadConfiguration()) {}

  DeferralManager deferrals() { return {config, preferences, machine.clock(), calendar}; }
  [[nodiscard]] PatchingCadenceManager cadence() const { return {config, calendar}; }

  VirtualMachine machine;
  Calendar calendar;
  RecordingLog log;
  PosixPreferenceDomains domains;
  NotificationCenter notifications{machine.main()};
  PreferenceManager preferences;
  CorvaneConfiguration config;
};

struct ScenesTest : ::testing::Test {
  ScenesTest() {
    folder_.write(std::string(kMarker), "port 1\n");
    std::filesystem::create_directories(places_.userSupportFolder());
    putUser({}, {app("larkspurnotes", "4.2", "4.2"), app("quill", "2.3.1", "2.4"), app("rookeryserver", "1.0", "1.1")});
  }

  void putUser(PlistDict values, const Apps& apps) const {
    if (!apps.empty()) values.insert_or_assign("DiscoveredAppsData", PlistData{writeJson(toJson(apps))});
    put(places_.userPreferencesPath(), writePlist(values, PlistFormat::binary).value());
  }

  void write(std::string_view name, Date now = VirtualMachine::kStart, const Calendar& calendar = Calendar::utc()) {
    const auto* scene = sceneNamed(name);
    ASSERT_NE(scene, nullptr) << name;
    putScene(*scene, places_.root, now - 2s, calendar);
  }

  // Every weekday, in zones whose days begin otherwise, one of which skips midnight on a Sunday.
  template <class Check>
  void everyDay(std::string_view name, Check check) {
    for (const auto* place : {"UTC", "Asia/Tokyo", "America/Santiago"}) {
      for (int day = 0; day < 7; ++day) {
        const auto now = localTime(zone(place), "2026-09-03 00:05") + std::chrono::days(day);
        SCOPED_TRACE(std::string(place) + ", day " + std::to_string(day));
        write(name, now, zone(place));
        Start start(places_, now, zone(place));
        check(start, now);
        EXPECT_EQ(start.log.messages(), std::vector<std::string>()) << "every value counts";
        if (HasFailure()) return;
      }
    }
  }

  static void expectDueInASettledCycle(Start& start, Date now) {
    const auto cycle = start.preferences.readPatchingCadenceState();
    ASSERT_TRUE(cycle.currentPatchingStartDate);
    EXPECT_FALSE(start.cadence().isAnchorMalformed(cycle) || start.cadence().shouldResetCycle(cycle, now) ||
                 start.cadence().isPatchingCompleteForCurrentCycle(cycle, now));
    const auto before = start.deferrals().getDeferralInfo();
    start.deferrals().seedDeadlineDatesFromAnchor(*cycle.currentPatchingStartDate, cycle.nextCycleStartDate);
    EXPECT_EQ(start.deferrals().getDeferralInfo(), before);
    EXPECT_LE(start.preferences.readNextAutoLaunch().value(), now);
    EXPECT_EQ(ErrorRetryWatch::evaluate(start.preferences.readPatchErrorRetryArmed(),
                                        start.preferences.readNextAutoLaunch(), now),
              ErrorRetryState::inactive);
  }

  testing::TemporaryFolder folder_;
  CorvaneConstants places_{.root = folder_.path(), .home = folder_.path() / "Users" / kUserName};
};

TEST_F(ScenesTest, APromptIsDueAndTellsWhatIsLeftOfBothLimits) {
  for (const auto* name : {"prompt", "confirmation"}) {
    everyDay(name, [](Start& start, Date now) {
      expectDueInASettledCycle(start, now);
      EXPECT_EQ(start.deferrals().checkDeadlines(), DeferralDeadlineStatus::normal);
      const auto info = start.deferrals().getDeferralInfo();
      const auto left = DeferralLimitSummaryBuilder::make(*start.config.deadlineCountHard - info.hardDeferralCount,
                                                          info.hardDeferralDate, now);
      EXPECT_EQ(left, DeferralLimitSummary(
                          limit::Both{.count = 2, .deadline = *info.hardDeferralDate, .deadlineIsNear = false}));
    });
  }
}

TEST_F(ScenesTest, TheHardDeadlineIsReachedByTheCountAlone) {
  everyDay("hard", [](Start& start, Date now) {
    expectDueInASettledCycle(start, now);
    EXPECT_EQ(start.deferrals().checkDeadlines(), DeferralDeadlineStatus::hardDeadlineReached);
    const auto info = start.deferrals().getDeferralInfo();
    EXPECT_EQ(info.hardDeadlineTrigger(start.config.deadlineCountHard, info.hardDeferralDate, now),
              HardDeadlineTrigger::count);
    EXPECT_EQ(start.config.dialogTimeoutDeferral, 120);
    EXPECT_FALSE(start.config.businessHoursStartTime) << "the countdown would wait for their end";
  });
}

TEST_F(ScenesTest, ACycleIsCompleteWithItsReceiptsInIt) {
  everyDay("completed-cycle", [this](Start& start, Date now) {
    const auto cycle = start.preferences.readPatchingCadenceState();
    EXPECT_TRUE(start.cadence().isPatchingCompleteForCurrentCycle(cycle, now));
    EXPECT_FALSE(start.cadence().isAnchorMalformed(cycle) || start.cadence().shouldResetCycle(cycle, now));
    EXPECT_FALSE(start.preferences.readNextAutoLaunch());

    PosixFiles files;
    const auto receipts = ReceiptManager(places_.receipts(), files, start.log).readAllReceipts();
    ASSERT_EQ(receipts.size(), 2U);
    for (const auto& receipt : receipts)
      EXPECT_TRUE(receipt.timestamp > *cycle.currentPatchingStartDate &&
                  receipt.timestamp <= *cycle.lastPatchingCompletionDate);
    EXPECT_EQ(receipts[0].label, Label("rookeryserver"));
    EXPECT_EQ(receipts[0].status, PatchingStatus::failure);
    EXPECT_TRUE(InstallomatorExitCode::countsAsInstallFailure(receipts[0].installomatorExitCode));
    EXPECT_EQ(receipts[1].label, Label("larkspurnotes"));
    EXPECT_EQ(receipts[1].version, "4.2");
    EXPECT_EQ(start.preferences.readUpdateAllErrorClearedLabels(), LabelSet{Label("rookeryserver")});
  });
}

TEST_F(ScenesTest, NothingOfAnEarlierSceneStaysButTheInventory) {
  const auto inventory = Start(places_, VirtualMachine::kStart, Calendar::utc()).preferences.readDiscoveredApps();
  write("hard");
  write("completed-cycle");
  {
    Start start(places_, VirtualMachine::kStart, Calendar::utc());
    EXPECT_EQ(start.deferrals().getDeferralInfo(), DeferralInfo());
    EXPECT_FALSE(start.config.deadlineCountHard || start.config.deadlineDaysHard);
    EXPECT_FALSE(start.preferences.isManaged("DialogTimeoutDeferral"));
    EXPECT_TRUE(start.preferences.isManaged("SupportTeamName")) << "as every sample has it";
    EXPECT_EQ(start.config.requiredLabels, (std::vector<std::string>{"heronvpn", "alderagent"}));
    EXPECT_EQ(start.preferences.readDiscoveredApps(), inventory);
  }
  write("prompt");
  Start start(places_, VirtualMachine::kStart, Calendar::utc());
  EXPECT_FALSE(start.preferences.readPatchingCadenceState().lastPatchingCompletionDate);
  EXPECT_EQ(take(places_.receipts()), "");
}

TEST_F(ScenesTest, RefusesWhereItWouldShowNothingOrTakeTheStateFromUnderAProgram) {
  const auto& scene = *sceneNamed("prompt");
  const auto now = VirtualMachine::kStart;
  const auto utc = Calendar::utc();
  EXPECT_EQ(sceneNamed("Prompt"), nullptr);

  const auto before = take(places_.userPreferencesPath());
  {
    InstanceLock application(places_.instanceLock());
    ASSERT_EQ(application.take().outcome, SessionLock::Outcome::taken);
    EXPECT_THROW(putScene(scene, places_.root, now, utc), MakingFailed);
  }
  EXPECT_EQ(take(places_.userPreferencesPath()), before);

  const Apps current{app("larkspurnotes", "4.2", "4.2"), app("rookeryserver", "1.1", "1.1")};
  putUser({}, current);
  EXPECT_THROW(putScene(scene, places_.root, now, utc), MakingFailed) << "nothing is outdated";
  for (const auto& values : {PlistDict(), PlistDict{{"DiscoveredAppsData", PlistData{"[]"}}}}) {
    putUser(values, {});
    EXPECT_THROW(putScene(scene, places_.root, now, utc), NothingDiscovered);
  }
  putUser({{"DiscoveredAppsData", PlistData{"["}}}, {});
  EXPECT_THROW(putScene(scene, places_.root, now, utc), MakingFailed);
  EXPECT_FALSE(std::filesystem::exists(places_.managedPreferencesPath()));

  std::filesystem::remove(places_.root / kMarker);
  EXPECT_THROW(putScene(scene, places_.root, now, utc), MakingFailed);
}

}  // namespace
}  // namespace corvane::sample
