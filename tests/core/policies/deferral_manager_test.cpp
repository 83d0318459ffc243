#include "core/policies/deferral_manager.h"

#include "core/policies/calendar_days.h"
#include "core/policies/deferral_limit_summary.h"
#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

struct DeferralManagerTest : ::testing::Test, protected testing::ScriptedPreferences {
  DeferralManager manager() { return {config_, preferences, machine.clock(), zone("Europe/Berlin")}; }
  Date now() { return machine.now(); }
  void storeDate(const char* key, Date date) { preferences.writePreference(key, PlistValue(date)); }
  static Date day(const std::string& text) { return localTime(zone("Europe/Berlin"), text); }

  CorvaneConfiguration config_;
};

using enum DeferralDeadlineStatus;

TEST_F(DeferralManagerTest, AUsersDeferralCountsOnTheHardSideAtEveryLevelAndArms) {
  for (const auto level : {DeferralEscalation::normal, DeferralEscalation::focus, DeferralEscalation::hard})
    manager().recordDeferral(90, level);
  EXPECT_EQ(manager().getDeferralInfo(), (DeferralInfo{.focusDeferralCount = 0, .hardDeferralCount = 3}));
  EXPECT_TRUE(sameSecond(preferences.readNextAutoLaunch().value(), now() + 90min));
  EXPECT_FALSE(preferences.readAutomaticFocusDeferralArmed());
  EXPECT_FALSE(preferences.readPatchErrorRetryArmed());
}

TEST_F(DeferralManagerTest, CountsFromWhatStandsInTheDomainAndNeverOverflows) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  const std::pair<PlistValue, std::int64_t> stored[] = {{7, 8}, {-3, 1}, {"many", 1}, {PlistValue(kMost), kMost}};
  for (const auto& [before, after] : stored) {
    domains.setUser({{"HardDeferralCount", before}, {"FocusDeferralCount", before}, {"Other", "stays"}});
    manager().recordDeferral(60, DeferralEscalation::normal);
    manager().recordAutomaticFocusDeferral(60);
    const auto values = *domains.user().values;
    EXPECT_EQ(values.at("HardDeferralCount"), PlistValue(after));
    EXPECT_EQ(values.at("FocusDeferralCount"), PlistValue(after));
    EXPECT_EQ(values.at("Other"), PlistValue("stays"));
  }
}

TEST_F(DeferralManagerTest, AnAutomaticDeferralCountsOnTheFocusSideOnlyAndSaysSo) {
  manager().recordAutomaticFocusDeferral(30);
  EXPECT_EQ(manager().getDeferralInfo(), (DeferralInfo{.focusDeferralCount = 1, .hardDeferralCount = 0}));
  EXPECT_TRUE(preferences.readAutomaticFocusDeferralArmed());
  EXPECT_TRUE(sameSecond(preferences.readNextAutoLaunch().value(), now() + 30min));
}

TEST_F(DeferralManagerTest, ArmsAtLeastAMinuteAheadAndNeverOverflows) {
  for (const std::int64_t minutes : {std::int64_t{0}, std::int64_t{-5}}) {
    manager().recordDeferral(minutes, DeferralEscalation::hard);
    EXPECT_TRUE(sameSecond(preferences.readNextAutoLaunch().value(), now() + 1min));
  }
  manager().recordDeferral(std::numeric_limits<std::int64_t>::max(), DeferralEscalation::hard);
  EXPECT_GT(preferences.readNextAutoLaunch().value(), now() + std::chrono::days(365));
}

TEST_F(DeferralManagerTest, CountLimitsFireWhenReachedAndTheHardSideWins) {
  EXPECT_EQ(manager().checkDeadlines(), normal);
  manager().recordDeferral(60, DeferralEscalation::hard);
  manager().recordAutomaticFocusDeferral(60);
  EXPECT_EQ(manager().checkDeadlines(), normal) << "no limit is set";

  config_.deadlineCountFocus = 2;
  EXPECT_EQ(manager().checkDeadlines(), normal);
  config_.deadlineCountFocus = 1;
  EXPECT_EQ(manager().checkDeadlines(), focusDeadlineReached);
  config_.deadlineCountHard = 1;
  EXPECT_EQ(manager().checkDeadlines(), hardDeadlineReached);

  manager().resetDeferralCounts();
  EXPECT_EQ(manager().checkDeadlines(), normal);
  config_.deadlineCountHard = 0;
  EXPECT_EQ(manager().checkDeadlines(), hardDeadlineReached) << "a limit of 0 is reached at once";
}

TEST_F(DeferralManagerTest, APassedDateCountsForAnyLimitOfItsSide) {
  storeDate("HardDeferralDate", now() - 1s);
  storeDate("FocusDeferralDate", now() - 1s);
  EXPECT_EQ(manager().checkDeadlines(), normal) << "a side without a limit never fires";
  config_.deadlineCountFocus = 9;
  EXPECT_EQ(manager().checkDeadlines(), focusDeadlineReached);
  config_.deadlineDaysHard = 9;
  EXPECT_EQ(manager().checkDeadlines(), hardDeadlineReached);
  storeDate("HardDeferralDate", now() + 1s);
  EXPECT_EQ(manager().checkDeadlines(), focusDeadlineReached);
  machine.advance(1s);
  EXPECT_EQ(manager().checkDeadlines(), hardDeadlineReached) << "the moment itself has passed";
}

TEST_F(DeferralManagerTest, SeedsEachSidesDateFromTheAnchorWithinTheCycle) {
  config_.deadlineDaysFocus = 3;
  config_.deadlineDaysHard = 30;
  const auto anchor = day("2026-10-19");
  manager().seedDeadlineDatesFromAnchor(anchor, day("2026-11-02"));
  EXPECT_EQ(preferences.readFocusDeferralDate(), day("2026-10-22"));
  EXPECT_EQ(manager().hardDeadlineDate(), day("2026-11-02")) << "not behind the next start";

  config_.deadlineDaysHard = 7;
  manager().seedDeadlineDatesFromAnchor(anchor, std::nullopt);
  const auto written = domains.user().version;
  manager().seedDeadlineDatesFromAnchor(anchor, std::nullopt);
  EXPECT_EQ(domains.user().version, written) << "the same dates again";
  EXPECT_EQ(manager().hardDeadlineDate(), day("2026-10-26")) << "calendar days, also over a clock change";

  config_.deadlineDaysFocus.reset();
  config_.deadlineDaysHard.reset();
  EXPECT_FALSE(manager().hardDeadlineDate()) << "none is shown while the day limit is off";
  manager().seedDeadlineDatesFromAnchor(anchor, std::nullopt);
  EXPECT_FALSE(preferences.readFocusDeferralDate());
  EXPECT_FALSE(manager().getDeferralInfo().hardDeferralDate);
}

TEST_F(DeferralManagerTest, ResettingKeepsWhatIsArmed) {
  manager().recordDeferral(60, DeferralEscalation::hard);
  manager().recordAutomaticFocusDeferral(60);
  storeDate("HardDeferralDate", now());
  storeDate("FocusDeferralDate", now());
  manager().resetDeferralCounts();
  EXPECT_EQ(manager().getDeferralInfo(), DeferralInfo{});
  EXPECT_FALSE(preferences.readFocusDeferralDate());
  EXPECT_TRUE(preferences.readNextAutoLaunch());
}

TEST(DeferralRules, KeepsTheOptionsThatEndBeforeTheHardDeadline) {
  const std::vector<std::int64_t> options{240, 60, 1440, 0};
  const Date now = VirtualMachine::kStart;
  using List = std::vector<std::int64_t>;
  EXPECT_EQ(DeferralManager::allowedDeferralMinutes(options, std::nullopt, now), options);
  EXPECT_EQ(DeferralManager::allowedDeferralMinutes(options, now + 240min, now), (List{60, 0}));
  EXPECT_EQ(DeferralManager::allowedDeferralMinutes(options, now + 240min + 1us, now), (List{240, 60, 0}));
  EXPECT_EQ(DeferralManager::allowedDeferralMinutes(options, now, now), List{});
}

TEST(DeferralRules, ResumesByPromptNotificationOrSilently) {
  using enum DeferralManager::ResumePresentation;
  const auto presentation = DeferralManager::resumePresentation;
  EXPECT_EQ(presentation(hardDeadlineReached, false), foregroundPrompt);
  EXPECT_EQ(presentation(hardDeadlineReached, true), foregroundPrompt);
  EXPECT_EQ(presentation(focusDeadlineReached, false), notification);
  EXPECT_EQ(presentation(focusDeadlineReached, true), silent);
  EXPECT_EQ(presentation(normal, true), notification);
}

TEST(DeferralLimitSummary, SaysWhatRemainsOfEachLimitThatIsSet) {
  const Date now = VirtualMachine::kStart;
  const auto summary = [&](std::int64_t count, std::optional<Date> deadline) {
    return DeferralLimitSummaryBuilder::make(count, deadline, now);
  };
  EXPECT_FALSE(summary(0, std::nullopt));
  EXPECT_EQ(summary(2, std::nullopt), DeferralLimitSummary(limit::CountOnly{2}));
  const std::pair<Duration, std::int64_t> days[] = {{-1h, 0}, {0h, 0},  {1min, 1}, {24h, 1}, {25h, 1},
                                                    {26h, 2}, {47h, 2}, {48h, 2},  {72h, 3}};
  for (const auto& [ahead, left] : days)
    EXPECT_EQ(summary(0, now + ahead), DeferralLimitSummary(limit::DaysOnly{left})) << ahead.count();
  EXPECT_EQ(summary(2, now + 24h), DeferralLimitSummary(limit::Both{2, now + 24h, false}));
  EXPECT_EQ(summary(2, now + 24h - 1s), DeferralLimitSummary(limit::Both{2, now + 24h - 1s, true}));
}

}  // namespace
}  // namespace corvane
