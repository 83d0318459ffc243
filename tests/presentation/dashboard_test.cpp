#include "core/policies/installomator_exit_code.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/virtual_time.h"
#include "presentation/dashboard_builder.h"
#include "presentation/page_json.h"
#include "presentation/page_texts.h"
#include "support/app_facts_setup.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::configure;

constexpr Date kNow = VirtualMachine::kStart;  // Sunday, 2026-11-01 12:00 UTC
const Label kQuill("quill");

struct DashboardTest : ::testing::Test {
  DashboardTest() {
    facts_.hasAppStoreReceipt = [](const AppInfo&) { return false; };
    fields_.helper.helperOperational = true;
    fields_.helper.installomatorAvailable = true;
    fields_.inventory.lastDiscoveryDate = kNow - 5min;
  }

  DashboardPage page() {
    return makeDashboardPage({.fields = fields_,
                              .facts = facts_,
                              .listed = listed_,
                              .locale = locale_,
                              .now = kNow,
                              .title = AppDisplayTitle(title_),
                              .helperStatus = helperStatus_,
                              .watchpoint = watchpoint_,
                              .expanded = expanded_,
                              .selfUpdateDismissed = selfUpdateDismissed_,
                              .capabilities = capabilities_,
                              .explained = explained_});
  }
  AppStatusRow row(const AppInfo& app) {
    listed_ = {app};
    fields_.inventory.apps = listed_;
    return page().rows.at(0);
  }
  void fail(std::int64_t code, std::int64_t times) {
    std::vector<PatchingReceipt> receipts;
    for (std::int64_t i = 0; i < times; ++i)
      receipts.push_back({.label = kQuill,
                          .timestamp = kNow - 2h - std::chrono::minutes(i),
                          .status = PatchingStatus::failure,
                          .version = "1.0",
                          .targetVersion = "2.0",
                          .installomatorExitCode = code});
    facts_.failures = LabelFailureHistory::failureRecords(receipts);
    facts_.failureTargets[kQuill] = "2.0";
    facts_.latestReceipts = std::make_shared<LatestReceipts>(LatestReceipts{{kQuill, receipts.front()}});
    expanded_[kQuill].receipts = receipts;
  }
  void busy(bool patching, std::optional<DiscoveryOperation> operation) {
    fields_.gate = {.isPatching = patching, .isLoading = !patching, .currentOperation = operation};
  }

  StatusFields fields_;
  AppFacts facts_;
  Apps listed_;
  ScriptedLocale locale_;
  std::string title_ = "Corvane";
  HelperStatus helperStatus_ = HelperStatus::enabled;
  std::optional<PendingWatchpoint> watchpoint_;
  std::map<Label, ExpandedHistory> expanded_;
  std::map<Label, Explanation> explained_;
  bool selfUpdateDismissed_ = false;
  DashboardCapabilities capabilities_{.updatesItself = true};
};

AppInfo quill() {
  return {.label = kQuill,
          .name = "Quill",
          .appName = "Quill.app",
          .currentVersion = "1.0",
          .newVersion = "2.0",
          .appPath = "/Applications/Quill.app"};
}

TEST_F(DashboardTest, OffersItsActionsOnlyWhileNothingRuns) {
  EXPECT_FALSE(page().updateAll.enabled) << "nothing is pending";
  fields_.inventory.updatesAwaitingNextCycle = 1;
  EXPECT_TRUE(page().updateAll.visible && page().updateAll.enabled);
  fields_.inventory = {.pendingUpdates = 2};
  auto shown = page();
  EXPECT_EQ(shown.title, "Status Dashboard");
  EXPECT_EQ(shown.subtitle, "Application update status and patching information");
  EXPECT_EQ(shown.discover.text, "Discover Applications");
  EXPECT_TRUE(shown.discover.enabled && shown.check.enabled && shown.updateAll.enabled);
  EXPECT_EQ(shown.workLine.text, "");

  const std::tuple<bool, DiscoveryOperation, const char*> work[] = {
      {true, DiscoveryOperation::patchAll, "Patching in progress..."},
      {true, DiscoveryOperation::patchSingle, "Patching in progress..."},
      {true, DiscoveryOperation::patchBackground, "Background patching in progress..."},
      {false, DiscoveryOperation::discoverInstalled, "Discovering applications..."},
      {false, DiscoveryOperation::checkUpdates, "Checking for updates..."}};
  for (const auto& [patching, operation, line] : work) {
    busy(patching, operation);
    shown = page();
    EXPECT_EQ(shown.workLine.text, line);
    EXPECT_FALSE(shown.discover.enabled || shown.check.enabled || shown.updateAll.enabled) << line;
  }
}

TEST_F(DashboardTest, TellsAnErrorBeforeTheTransientLine) {
  EXPECT_EQ(page().message, PageMessage());
  fields_.messages.statusMessage = "Updates deferred for 1 hour.";
  EXPECT_EQ(page().message.text, "Updates deferred for 1 hour.");
  fields_.messages.errorMessage = "The helper did not answer.";
  EXPECT_EQ(page().message.text, "The helper did not answer.");
  EXPECT_EQ(page().message.symbol, "exclamationmark.triangle.fill");
}

TEST_F(DashboardTest, SpeaksARowAsAWhole) {
  EXPECT_EQ(row(quill()).spokenText, "Quill, Installed: 1.0, Latest: 2.0");
  auto bird = quill();
  bird.appName = "青い鳥.app";
  EXPECT_EQ(row(bird).monogram, "青");
}

TEST_F(DashboardTest, CountsOnItsCards) {
  fields_.inventory.pendingUpdates = 3;
  fields_.inventory.upToDateCount = 12;
  fields_.inventory.alertCount = 1;
  fields_.inventory.updatesAwaitingNextCycle = 4;
  const auto cards = [this] {
    std::vector<std::string> all;
    for (const auto& card : page().cards) all.push_back(card.title + " " + card.value + " " + card.icon);
    return all;
  };
  EXPECT_THAT(cards(), ElementsAre("Pending Updates 3 arrow.down.circle.fill", "Up to Date 12 checkmark.circle.fill",
                                   "Alerts 1 exclamationmark.triangle.fill"));
  fields_.inventory.cycleCompletionMessage = "complete";
  EXPECT_EQ(cards()[0], "New Updates 4 arrow.down.circle");
  EXPECT_EQ(page().cards[0].color, ColorRole::blue);
  fields_.inventory.updatesAwaitingNextCycle = 0;
  EXPECT_EQ(page().cards[0].title, "Pending Updates");
}

TEST_F(DashboardTest, ShowsNoCountWhileACheckOverEverythingRuns) {
  busy(false, DiscoveryOperation::checkUpdates);
  EXPECT_EQ(page().cards[0].value, "0") << "a scoped check";
  fields_.discovery.updateCheckCoversAllApps = true;
  for (const auto& card : page().cards) EXPECT_TRUE(card.isPlaceholder && card.value == "—");
}

TEST_F(DashboardTest, StampsDatesAndTheDeadlineThatStands) {
  auto pills = page().timestamps;
  ASSERT_EQ(pills.size(), 2U);
  EXPECT_EQ(pills[0].label, "Last Discovery");
  EXPECT_TRUE(pills[0].timestamp.ends_with("5 minutes ago")) << pills[0].timestamp;
  EXPECT_EQ(pills[1].label, "Last Check for Updates");
  EXPECT_EQ(pills[1].timestamp, "Never");

  fields_.deferral.currentHardDeadlineDate = kNow + 72h;
  watchpoint_ = watchpoint::Enforcement{kNow + 2h};
  pills = page().timestamps;
  ASSERT_EQ(pills.size(), 4U);
  EXPECT_EQ(pills[2].label, "Update Deadline");
  EXPECT_TRUE(pills[2].timestamp.ends_with("in 3 days")) << pills[2].timestamp;
  EXPECT_EQ(pills[3].label, "Installs Automatically");
  watchpoint_ = watchpoint::DeferralReminder{kNow + 2h};
  EXPECT_EQ(page().timestamps.size(), 3U) << "a reminder installs nothing";
}

TEST_F(DashboardTest, FiltersAndRechecksAlertsOnlyInTheirFilter) {
  fields_.inventory.apps = listed_ = {quill()};
  const auto filters = page().filters;
  ASSERT_EQ(filters.size(), 4U);
  EXPECT_EQ(filters[0].key + filters[1].key + filters[2].key + filters[3].key, "allneedsUpdatealertsupToDate");
  EXPECT_EQ(filters[3].help, "Show applications that are up to date");
  EXPECT_TRUE(filters[0].selected && !filters[2].selected);
  EXPECT_FALSE(page().recheckAll.visible);
  fields_.filterMode = FilterMode::alerts;
  EXPECT_TRUE(page().filters[2].selected && page().recheckAll.visible);
  EXPECT_EQ(page().recheckAll.text, "Re-check All Alerts");
  listed_.clear();
  EXPECT_FALSE(page().recheckAll.visible);
}

TEST_F(DashboardTest, SaysWhyTheListIsEmpty) {
  EXPECT_EQ(page().empty.title, "No applicable applications discovered");
  EXPECT_EQ(page().empty.text, "Corvane keeps checking in the background. Click Check for Updates to scan now.");
  EXPECT_TRUE(page().empty.check.visible);
  fields_.inventory.lastDiscoveryDate.reset();
  EXPECT_EQ(page().empty.title, "No applications discovered yet");
  fields_.inventory.apps = {quill()};
  fields_.filterMode = FilterMode::alerts;
  EXPECT_EQ(page().empty.title, "No applications have alerts");
  EXPECT_FALSE(page().empty.check.visible);
  listed_ = {quill()};
  EXPECT_FALSE(page().empty.visible);
}

TEST_F(DashboardTest, WordsARowByTheFirstTestThatHolds) {
  using enum ColorRole;
  auto current = quill();
  current.currentVersion = "2.0";
  auto unchecked = quill();
  unchecked.newVersion.reset();
  auto failed = unchecked;
  failed.updateCheckFailed = true;
  auto mismatch = failed;
  mismatch.teamIDMismatch = true;
  auto fromStore = failed;
  fromStore.macAppStoreManaged = true;
  auto required = quill();
  required.currentVersion.reset();
  required.appPath.reset();
  auto unversioned = quill();
  unversioned.currentVersion.reset();
  configure(facts_, [](auto& config) { config.requiredLabels = {"quill"}; });

  const auto* const triangle = "exclamationmark.triangle.fill";
  const auto* const unanswered = "Couldn't retrieve latest version";
  const auto* const foreign = "Signature mismatch—won't update";
  const auto* const byStore = "Updated by the App Store";
  const std::tuple<const char*, AppInfo, const char*, const char*, ColorRole, const char*, ColorRole, bool, bool>
      cases[] = {
          {"outdated", quill(), "Installed: 1.0", "Latest: 2.0", orange, triangle, yellow, true, false},
          {"current", current, "Installed: 2.0", "Latest: 2.0", secondary, "checkmark.circle.fill", green, false,
           false},
          {"unchecked", unchecked, "Installed: 1.0", "", secondary, "", clear, false, false},
          {"check failed", failed, "Installed: 1.0", unanswered, orange, triangle, orange, false, true},
          {"mismatch before all", mismatch, "Installed: 1.0", foreign, orange, "lock.shield.fill", orange, false, true},
          {"of the store", fromStore, "Installed: 1.0", byStore, secondary, "bag.fill", secondary, false, true},
          {"required, missing", required, "Not installed (required)", "Latest: 2.0", orange, triangle, yellow, true,
           false},
          {"no version found", unversioned, "", "Latest: 2.0", orange, triangle, yellow, true, false},
      };
  for (const auto& [what, app, version, status, color, icon, iconColor, update, recheck] : cases) {
    const auto shown = row(app);
    EXPECT_EQ(std::tuple(shown.versionText, shown.statusText, shown.statusColor, shown.statusIcon,
                         shown.statusIconColor, shown.update.visible, shown.recheck.visible, shown.failureText),
              std::tuple(version, status, color, icon, iconColor, update, recheck, ""))
        << what;
  }
}

TEST_F(DashboardTest, AsksForARequiredReinstall) {
  configure(facts_, [](auto& config) {
    config.requiredLabels = {"quill"};
    config.installomatorOptions = "INSTALL=force";
  });
  facts_.reinstallsCurrentRequiredApps = true;
  facts_.cycleStart = kNow - 24h;
  auto current = quill();
  current.currentVersion = "2.0";
  EXPECT_EQ(row(current).statusText, "Required reinstall");
  EXPECT_TRUE(row(current).update.visible);
}

TEST_F(DashboardTest, TellsAFailedUpdateAndAHoldBeforeIt) {
  fail(2, 1);
  auto shown = row(quill());
  EXPECT_EQ(shown.failureText, "Last update failed");
  EXPECT_EQ(shown.statusIconColor, ColorRole::orange);
  EXPECT_TRUE(shown.statusIconHelp.starts_with("The last update failed (Download failed) today at 10:00"))
      << shown.statusIconHelp;

  fail(2, 4);
  shown = row(quill());
  EXPECT_EQ(shown.failureText, "Skipped until the next cycle");
  EXPECT_EQ(shown.statusIconHelp,
            "Corvane stopped trying after 4 failed updates. It tries again after the next cycle starts or when a new "
            "version is released. Click Update to try now.");
  EXPECT_TRUE(shown.update.enabled) << "a held one can still be updated by hand";
}

TEST_F(DashboardTest, TellsTheReasonOfAFailedCheckAndOfAMismatch) {
  auto app = quill();
  app.updateCheckFailed = true;
  app.updateCheckFailureReason = "timed out";
  EXPECT_TRUE(row(app).statusIconHelp.ends_with("until a re-check succeeds.\n\nLast failure: timed out"));
  EXPECT_EQ(row(app).recheck.help, "Re-check the latest available version for this app.\nLast failure: timed out");
  app.updateCheckFailureReason.reset();
  EXPECT_EQ(row(app).recheck.help, "Re-check the latest available version for this app");
  app.teamIDMismatch = true;
  app.expectedTeamID = "AAAA";
  EXPECT_NE(row(app).statusIconHelp.find("(expected AAAA, found unknown)"), std::string::npos);
}

TEST_F(DashboardTest, ShowsARunInTheRowsThatItIsAbout) {
  busy(true, DiscoveryOperation::patchAll);
  fields_.patch.progress = PatchProgress{.labels = {Label("first"), kQuill, Label("last")}, .total = 3};
  const auto progress = [&](const Label& label) {
    auto app = quill();
    app.label = label;
    return row(app).progressText;
  };
  const auto all = [&] { return std::tuple(progress(Label("first")), progress(kQuill), progress(Label("last"))); };
  EXPECT_EQ(all(), std::tuple("Updating…", "Waiting…", "Waiting…")) << "the first one until the run tells";
  fields_.patch.progress->currentLabel = kQuill;
  fields_.patch.progress->done = 1;
  EXPECT_EQ(all(), std::tuple("", "Updating…", "Waiting…"));
  EXPECT_EQ(progress(Label("stranger")), "");
  EXPECT_FALSE(row(quill()).update.enabled);
  fields_.blockingPrompt.blockingPromptAppName = "Quill";
  EXPECT_EQ(progress(kQuill), "Waiting for you to quit Quill…");
}

TEST_F(DashboardTest, UnfoldsTheHistoryOfARow) {
  auto shown = row(quill());
  EXPECT_EQ(shown.expanderHelp, "Show recent patch history");
  EXPECT_FALSE(shown.isExpanded);

  expanded_[kQuill] = {};
  shown = row(quill());
  EXPECT_EQ(shown.expanderHelp, "Hide patch history");
  EXPECT_EQ(shown.receiptsTitle + ": " + shown.receiptsEmptyText,
            "Recent patches: No patches recorded for this label yet.");
  EXPECT_EQ(shown.eventsTitle, "");

  fail(2, 1);
  auto& history = expanded_[kQuill];
  history.receipts.push_back({.label = kQuill, .timestamp = kNow - 72h, .version = "1.0", .targetVersion = "1.0"});
  history.receipts.push_back({.label = kQuill, .timestamp = kNow - 72h, .status = PatchingStatus::skipped});
  history.events.push_back({.label = kQuill, .eventType = DeferralEventType::focusSuppressed, .timestamp = kNow});
  shown = row(quill());
  ASSERT_EQ(shown.receipts.size(), 3U);
  EXPECT_EQ(shown.receipts[0].symbol, "xmark.octagon.fill");
  EXPECT_EQ(shown.receipts[0].version, "Tried 2.0");
  EXPECT_EQ(shown.receipts[0].detail, InstallomatorExitCode::detail(2, false).description + " (Installomator exit 2)");
  EXPECT_EQ(shown.receipts[1].symbol + shown.receipts[1].version + shown.receipts[1].detail,
            "checkmark.circle.fill1.0");
  EXPECT_EQ(shown.receipts[2].color, ColorRole::orange);
  EXPECT_NE(shown.receipts[1].key, shown.receipts[2].key);
  EXPECT_EQ(shown.eventsTitle, "Deferral events");
  EXPECT_EQ(shown.events.at(0).text + shown.events.at(0).symbol, "Focus suppressedmoon.zzz");
}

TEST_F(DashboardTest, LeadsOutOfABrokenSetUp) {
  EXPECT_FALSE(page().helperBanner.visible);
  fields_.helper.installomatorAvailable = false;
  EXPECT_EQ(page().helperBanner.helperLine, "");
  EXPECT_EQ(page().helperBanner.installomatorLine,
            "Installomator not found — update detection and patching will not work.");
  fields_.helper.helperOperational = false;
  const std::tuple<HelperStatus, const char*, const char*> cases[] = {
      {HelperStatus::requiresApproval, "Root helper requires approval in System Settings › Login Items.",
       "Approve in System Settings"},
      {HelperStatus::notRegistered, "Root helper is not registered — patching is unavailable.", "Set Up Helper"},
      {HelperStatus::enabled, "Root helper is not operational — patching is unavailable.", "Reset Helper"},
      {HelperStatus::unknown, "Root helper is not operational — patching is unavailable.", "Reset Helper"}};
  for (const auto& [status, line, offered] : cases) {
    helperStatus_ = status;
    const auto banner = page().helperBanner;
    EXPECT_EQ(banner.helperLine, line);
    for (const auto& button : {banner.setUp, banner.openSettings, banner.reset})
      EXPECT_EQ(button.visible, button.text == offered) << line << " " << button.text;
  }
}

TEST_F(DashboardTest, OffersTheUpdateOfTheProgramUntilDismissed) {
  EXPECT_FALSE(page().selfUpdateBanner.visible);
  fields_.selfUpdate.selfUpdateAvailable =
      SelfUpdateAvailability{.label = Label("corvane4"), .availableVersion = "4.1", .runningVersion = "4.0"};
  EXPECT_EQ(page().selfUpdateBanner.title, "Corvane update available");
  EXPECT_EQ(page().selfUpdateBanner.text, "Version 4.1 is available. You’re currently running 4.0");
  EXPECT_TRUE(page().selfUpdateBanner.update.enabled);
  capabilities_.updatesItself = false;
  EXPECT_FALSE(page().selfUpdateBanner.update.visible);
  selfUpdateDismissed_ = true;
  EXPECT_FALSE(page().selfUpdateBanner.visible);
}

TEST_F(DashboardTest, BearsTheConfiguredTitleWhateverItHolds) {
  title_ = "Patch {0} Desk";
  fail(2, 3);
  EXPECT_TRUE(row(quill()).statusIconHelp.starts_with("Patch {0} Desk stopped trying after 3 failed updates."));
  listed_.clear();
  fields_.inventory.apps.clear();
  EXPECT_TRUE(page().empty.text.starts_with("Patch {0} Desk keeps checking"));
}

TEST_F(DashboardTest, TellsWhatComesByItselfAndWhen) {
  EXPECT_EQ(page().nextStep, PageMessage());
  watchpoint_ = watchpoint::Enforcement{kNow + 21h};
  EXPECT_EQ(page().nextStep,
            (PageMessage{
                .text = "Updates install automatically in 21 hours", .symbol = "timer", .color = ColorRole::orange}));
  watchpoint_ = watchpoint::DeferralReminder{kNow + 2h - 61s};
  EXPECT_EQ(page().nextStep,
            (PageMessage{.text = "Deferred — you'll be reminded in 1 hour, 59 minutes", .symbol = "bell"}));
  watchpoint_ = watchpoint::FocusDeferral{kNow + 59s};
  EXPECT_EQ(page().nextStep,
            (PageMessage{.text = "Focus deferral — checking again in less than a minute", .symbol = "moon.zzz"}));
  configure(facts_, [](auto& config) { config.focusDeferralNotificationsEnabled = true; });
  EXPECT_EQ(page().nextStep.text, "Focus deferral — next reminder in less than a minute");
  watchpoint_.reset();
  fields_.inventory.cycleCompletionMessage = "Patching is complete for this cycle. The next cycle starts May 1, 2027.";
  EXPECT_EQ(page().nextStep, (PageMessage{.text = *fields_.inventory.cycleCompletionMessage,
                                          .symbol = "checkmark.circle.fill",
                                          .color = ColorRole::green}));
}

TEST_F(DashboardTest, WhyUnfoldsWithItsRulesTheSettingsBehindThemAndACopyOfTheWhole) {
  EXPECT_EQ(row(quill()).whyButton.help, "Why it is so, and what happens next");
  EXPECT_EQ(row(quill()).why, WhyPart()) << "nothing is made of what is folded in";
  explained_[kQuill] = {.label = kQuill,
                        .name = "Quill",
                        .verdict = ExplainedVerdict::held,
                        .reason = "Its update failed too often.",
                        .steps = {{.rule = ExplainedRule::required,
                                   .holds = true,
                                   .detail = "\"qu*\" fits the label.",
                                   .key = "RequiredLabels",
                                   .source = ValueSource::managed},
                                  {.rule = ExplainedRule::appStore},
                                  {.rule = ExplainedRule::held, .holds = true, .decides = true}},
                        .prompt = "No prompt.",
                        .next = "It is tried again."};
  const auto held = row(quill());
  EXPECT_EQ(held.whyButton.help, "Hide why");
  EXPECT_EQ(held.why.title, "Held");
  ASSERT_EQ(held.why.lines.size(), 3U);
  EXPECT_EQ(held.why.lines[0].source, "RequiredLabels, managed");
  EXPECT_EQ(held.why.lines[1].color, ColorRole::secondary);
  EXPECT_EQ(held.why.lines[2].color, ColorRole::orange) << "the one that decides";
  EXPECT_EQ(held.why.copyText,
            "Quill (quill): Held\nIts update failed too often.\n\n"
            "  yes  Required: \"qu*\" fits the label. [RequiredLabels, managed]\n"
            "  no   Updated by the App Store\n  yes  Held after failures\n\nNo prompt.\nIt is tried again.\n");
}

TEST_F(DashboardTest, BecomesJsonWithItsFieldNames) {
  expanded_[kQuill] = {};
  listed_ = {quill()};
  const auto json = pageJson(page());
  ASSERT_TRUE(json.object());
  EXPECT_EQ(json.object()->entries().size(), fieldCount<DashboardPage>());
  const auto& rows = *json.find("rows")->array();
  EXPECT_EQ(rows.at(0).find("key")->string(), "quill");
  EXPECT_EQ(rows.at(0).find("statusColor")->string(), "orange");
  EXPECT_EQ(rows.at(0).find("update")->find("visible")->boolean(), true);
}

TEST(MomentText, IsAbsoluteAndRelative) {
  const ScriptedLocale locale;
  const std::tuple<Duration, const char*, const char*> cases[] = {
      {0s, "today at ", ", just now"},           {30s, "today at ", ", in less than a minute"},
      {-61s, "today at ", ", 1 minute ago"},     {59min + 1s, "today at ", ", in 1 hour"},
      {1h, "today at ", ", in 1 hour"},          {21h, "tomorrow at ", ", in 21 hours"},
      {-13h, "yesterday at ", ", 13 hours ago"}, {47h, "Nov 3, 2026", ", in 47 hours"},
      {48h, "Nov 3, 2026", ", in 2 days"},       {-72h, "Oct 29, 2026", ", 3 days ago"},
  };
  for (const auto& [ahead, absolute, relative] : cases) {
    const auto text = momentText(kNow + ahead, kNow, locale);
    EXPECT_TRUE(text.starts_with(absolute) && text.ends_with(relative)) << text;
  }
}

TEST(RemainingText, IsExactToTheMinuteWithinADay) {
  const ScriptedLocale locale;
  const std::pair<Duration, const char*> cases[] = {{1s, "less than a minute"},
                                                    {60s, "1 minute"},
                                                    {58min + 1s, "59 minutes"},
                                                    {1h, "1 hour"},
                                                    {61min, "1 hour, 1 minute"},
                                                    {24h - 61s, "23 hours, 59 minutes"},
                                                    {24h + 59min, "24 hours"},
                                                    {48h - 61s, "47 hours"},
                                                    {48h, "2 days"},
                                                    {13h + 72h, "4 days"}};
  for (const auto& [left, text] : cases) EXPECT_EQ(remainingText(kNow + left, kNow, locale), text);
}

}  // namespace
}  // namespace corvane
