// Commands over a scripted machine.
#include "ctl/session_fixture.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

TEST_F(CtlSession, OnlyVerbsThatWriteClaimTheSessionAndYieldToTheApplication) {
  know({current("quill")});
  lock.answer.outcome = SessionLock::Outcome::heldByOther;
  const testing::TemporaryFolder folder;
  const auto file = folder.write("settings.plist", "<plist version=\"1.0\"><dict/></plist>");
  for (const auto& facts : ctl::verbs()) {
    lock.taken = 0;
    EXPECT_EQ(run({.verb = facts.verb, .file = file}), facts.writes ? ExitCode::applicationRuns : ExitCode::done)
        << facts.name;
    EXPECT_EQ(lock.taken, facts.writes ? 1 : 0) << facts.name;
    EXPECT_EQ(err.empty(), !facts.writes) << facts.name;
    EXPECT_EQ(out.empty(), facts.writes) << facts.name;
  }
  EXPECT_EQ(helper.discoveriesAsked + helper.runsAsked, 0);
  EXPECT_EQ(runJson(Verb::update), ExitCode::applicationRuns);
  EXPECT_EQ(
      errorText(),
      "Corvane or another corvanectl is at work and owns the state. Do this in the window, or quit it and try again.");
  EXPECT_TRUE(err.empty());
}

TEST_F(CtlSession, WhatAnotherWriterLeftBeforeTheClaimIsKept) {
  know({outdated("quill"), outdated("tern")});
  lock.onTake = [&] { know({outdated("quill"), current("tern"), outdated("swift")}); };
  answerDiscoveries({Apps{current("quill")}});
  EXPECT_EQ(runJson(Verb::check, {label("quill")}), ExitCode::done);
  EXPECT_EQ(*preferences.readDiscoveredApps(), (Apps{current("quill"), current("tern"), outdated("swift")}));
}

TEST_F(CtlSession, ALockThatCannotBeMadeIsTheSessionsConvenienceAndHindersNothing) {
  know({current("quill")});
  lock.answer = {.outcome = SessionLock::Outcome::couldNotMakeFolder, .error = "Read-only file system"};
  EXPECT_EQ(run({.verb = Verb::update}), ExitCode::done);
  EXPECT_EQ(err, "corvanectl: the state could not be claimed (Read-only file system); continuing\n");
  EXPECT_EQ(out, "Nothing to update.\n");
}

TEST_F(CtlSession, VerbsThatReadWriteNothing) {
  know({outdated("quill")});
  const auto before = *domains.user().values;
  const auto calls = files.content(places.receipts());
  for (const auto verb : {Verb::status, Verb::list, Verb::history, Verb::settings}) {
    EXPECT_EQ(run({.verb = verb}), ExitCode::done);
    EXPECT_EQ(runJson(verb), ExitCode::done);
  }
  EXPECT_EQ(*domains.user().values, before);
  EXPECT_EQ(files.content(places.receipts()), calls);
  EXPECT_EQ(helper.discoveriesAsked + registration.kickstarts + registration.registered, 0);
}

TEST_F(CtlSession, ABundleNeedsNeitherLockNorHelper) {
  lock.answer.outcome = SessionLock::Outcome::heldByOther;
  onTerminal = true;
  EXPECT_EQ(run({.verb = Verb::bundle}), ExitCode::done);
  EXPECT_EQ(bundleOutput, "/var/tmp");
  EXPECT_EQ(out, "/var/tmp/none.zip\n");
  EXPECT_THAT(progress, ElementsAre("Generating diagnostic bundle …", ""));
  EXPECT_EQ(run({.verb = Verb::bundle, .json = true, .output = "~/x.zip"}), ExitCode::done);
  EXPECT_EQ(bundleOutput, "~/x.zip");
  EXPECT_EQ(field("path"), JsonValue("/var/tmp/none.zip"));
  bundle = failure("CRVDiagnosticBundle", 1, "Could not write the diagnostic bundle to /x.");
  EXPECT_EQ(run({.verb = Verb::bundle}), ExitCode::failed);
  EXPECT_EQ(err, "corvanectl: Could not write the diagnostic bundle to /x.\n");
  EXPECT_EQ(runJson(Verb::bundle), ExitCode::failed);
  EXPECT_EQ(errorText(), "Could not write the diagnostic bundle to /x.");
}

TEST_F(CtlSession, AHelperOutOfReachFailsCheckAndUpdateWithFour) {
  know({outdated("quill")});
  registration.current = HelperStatus::requiresApproval;
  EXPECT_EQ(runJson(Verb::check), ExitCode::helperOutOfReach);
  EXPECT_EQ(errorText(), "Root helper requires approval in System Settings › Login Items.");
  EXPECT_EQ(run({.verb = Verb::update}), ExitCode::helperOutOfReach);
  EXPECT_EQ(err, "corvanectl: Root helper requires approval in System Settings › Login Items.\n");
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(helper.runsAsked, 0);
}

TEST_F(CtlSession, AStoppedHelperIsOutOfReachAfterItsLimit) {
  know({outdated("quill")});
  helperAnswers = false;
  const auto begin = time.steadyNow();
  EXPECT_EQ(runJson(Verb::check), ExitCode::helperOutOfReach);
  EXPECT_EQ(errorText(), "The root helper runs but did not answer within 10 seconds.");
  EXPECT_LT(time.steadyNow() - begin, 11s);
  EXPECT_EQ(runJson(Verb::update), ExitCode::helperOutOfReach);
  EXPECT_EQ(helper.discoveriesAsked + helper.runsAsked, 0);
  // An answer that comes after all finds nobody who waits.
  for (auto& asked : helper.statuses) asked(StatusInfo{});
  helper.statuses.clear();

  // What is installed is scanned directly; the check that follows a scan is not waited for.
  writeLabel("tern");
  writeBundle("tern", "1.0");
  EXPECT_EQ(runJson(Verb::discover), ExitCode::helperOutOfReach);
  EXPECT_EQ(errorText(), "The root helper runs but did not answer within 10 seconds.");
  EXPECT_EQ(printedLabels(), std::vector<std::string>{"tern"});
  EXPECT_TRUE(field("message").isNull());
}

TEST_F(CtlSession, ADiscoveryThatCannotCheckIsNoSuccess) {
  writeLabel("tern");
  writeBundle("tern", "1.0");
  registration.current = HelperStatus::requiresApproval;
  const std::string unreached = "Root helper requires approval in System Settings › Login Items.";
  for (const bool json : {true, false}) {
    answerDiscoveries({failure("CRVHelperChannel", 1, "no helper")});
    EXPECT_EQ(run({.verb = Verb::discover, .json = json}), ExitCode::helperOutOfReach);
    if (json) {
      EXPECT_EQ(errorText(), unreached);
      EXPECT_EQ(printedLabels(), std::vector<std::string>{"tern"});
    }
    EXPECT_EQ(err, json ? "" : "corvanectl: " + unreached + "\n");
    EXPECT_EQ(out.find("Checking for updates"), std::string::npos) << out;
  }

  setHelperAlive(true);
  setScript(false);
  answerDiscoveries({Apps{unchecked("quill")}});
  EXPECT_EQ(runJson(Verb::discover), ExitCode::failed);
  EXPECT_EQ(errorText(), "Installomator not found — update detection and patching will not work.");
  EXPECT_EQ(printedLabels(), std::vector<std::string>{"quill"});
  EXPECT_TRUE(field("message").isNull());

  setScript(true);
  answerDiscoveries({Apps{unchecked("quill")}, Apps{current("quill")}});
  EXPECT_EQ(runJson(Verb::discover), ExitCode::done);
  EXPECT_EQ(field("message"), JsonValue("Check for Updates complete: 0 updates available, 1 up to date."));
}

TEST_F(CtlSession, LabelsThatNobodyKnowsFailAndACheckLetsTheHelperJudge) {
  know({outdated("quill")});
  const std::string text =
      "No application is known under nosuch, other. `corvanectl list` shows the labels, `corvanectl discover` "
      "looks for applications.";
  EXPECT_EQ(runJson(Verb::update, {label("quill"), label("nosuch"), label("other")}), ExitCode::failed);
  EXPECT_EQ(errorText(), text);
  EXPECT_EQ(helper.discoveriesAsked + helper.runsAsked, 0);

  answerDiscoveries({Apps{outdated("quill")}});
  EXPECT_EQ(runJson(Verb::check, {label("quill"), label("nosuch"), label("other")}), ExitCode::failed);
  EXPECT_EQ(errorText(), text);
  EXPECT_EQ(printedLabels(), std::vector<std::string>{"quill"});
  answerDiscoveries({Apps{outdated("fresh")}});
  EXPECT_EQ(runJson(Verb::check, {label("fresh")}), ExitCode::done);
}

TEST_F(CtlSession, AnOldAnswerIsNotPassedOffAsAFreshOne) {
  know({outdated("quill"), outdated("tern")});
  answerDiscoveries({Apps{current("tern")}});
  EXPECT_EQ(runJson(Verb::check, {label("quill"), label("tern")}), ExitCode::failed);
  EXPECT_EQ(errorText(),
            "No answer for quill: the label or its application is gone, and what is listed is from before.");
  EXPECT_EQ(printedLabels(), std::vector<std::string>{"tern"});
}

TEST_F(CtlSession, LabelsThatTheSettingsIgnoreAreToldAsSuch) {
  domains.setUser({{"IgnoredLabels", PlistArray{"swift*"}}});
  know({outdated("quill"), outdated("swiftnotes")});
  const std::string text = "Ignored by the current settings: swiftnotes.";
  EXPECT_EQ(runJson(Verb::update, {label("swiftnotes")}), ExitCode::failed);
  EXPECT_EQ(errorText(), text);
  for (const auto& answer : {Apps{outdated("swiftnotes")}, Apps{}}) {
    answerDiscoveries({answer});
    EXPECT_EQ(runJson(Verb::check, {label("swiftnotes")}), ExitCode::failed);
    EXPECT_EQ(errorText(), text);
  }
}

TEST_F(CtlSession, NothingToDoIsDone) {
  auto foreign = unchecked("foreign");
  foreign.teamIDMismatch = true;
  know({current("quill"), foreign});
  EXPECT_EQ(runJson(Verb::update), ExitCode::done);
  EXPECT_EQ(field("success"), JsonValue(true));
  EXPECT_EQ(field("installedCount"), JsonValue(0));
  EXPECT_EQ(run({.verb = Verb::update, .labels = {label("quill")}}), ExitCode::done);
  EXPECT_TRUE(out.starts_with("quill is up to date.\n\nLABEL")) << out;
  EXPECT_EQ(run({.verb = Verb::history, .labels = {label("quill")}}), ExitCode::done);
  EXPECT_EQ(out, "No patch runs recorded.\n");
  EXPECT_EQ(run({.verb = Verb::list, .filter = FilterMode::alerts}), ExitCode::done);
  EXPECT_EQ(out, "No application in this filter.\n");
}

TEST_F(CtlSession, AnEmptyInventoryPointsToDiscoverInEveryFilter) {
  for (const auto filter : {FilterMode::all, FilterMode::alerts}) {
    EXPECT_EQ(run({.verb = Verb::list, .filter = filter}), ExitCode::done);
    EXPECT_EQ(out, "No applications. `corvanectl discover` looks for them.\n");
  }
}

TEST_F(CtlSession, ApplicationsThatWereNeverCheckedAreNotTakenForUpToDate) {
  know({current("quill"), unchecked("tern")});
  EXPECT_EQ(runJson(Verb::update), ExitCode::failed);
  EXPECT_EQ(errorText(), "Not updated: 1 application was not checked yet; `corvanectl check` does.");
  know({current("quill"), unchecked("tern"), unchecked("swift")});
  EXPECT_EQ(runJson(Verb::update), ExitCode::failed);
  EXPECT_EQ(errorText(), "Not updated: 2 applications were not checked yet; `corvanectl check` does.");
  know({outdated("quill"), unchecked("tern")});
  runAnswer = PatchRunAnswer{.success = true, .message = "Updated 1 of 1.", .installedCount = 1};
  answerDiscoveries({Apps{current("quill")}});
  EXPECT_EQ(runJson(Verb::update), ExitCode::done);
}

TEST_F(CtlSession, ANamedApplicationThatCannotBeUpdatedIsAFailureThatSaysWhy) {
  auto store = outdated("store");
  store.macAppStoreManaged = true;
  auto foreign = outdated("foreign");
  foreign.teamIDMismatch = true;
  auto broken = unchecked("broken");
  broken.updateCheckFailed = true;
  broken.updateCheckFailureReason = "This machine has no zsh";
  know({outdated("quill"), store, foreign, broken, unchecked("fresh")});
  const struct {
    const char* label;
    const char* why;
  } rows[] = {{"foreign", "foreign is signed by another vendor than its label expects."},
              {"broken", "broken could not be checked: This machine has no zsh."},
              {"fresh", "fresh was not checked yet; `corvanectl check` does."}};
  for (const auto& row : rows) {
    EXPECT_EQ(run({.verb = Verb::update, .labels = {label("quill"), label(row.label)}}), ExitCode::failed);
    EXPECT_EQ(err, std::string("corvanectl: Not updated: ") + row.why + "\n");
    EXPECT_TRUE(out.empty());
  }
  EXPECT_EQ(helper.runsAsked, 0);
}

TEST_F(CtlSession, ARunThatFailsEndsWithOneAndPrintsWhatBecameOfIt) {
  know({outdated("quill"), outdated("tern")});
  runAnswer = PatchRunAnswer{.success = false, .message = "Updated 1 of 2. Failed: tern.", .installedCount = 1};
  answerDiscoveries({Apps{current("quill"), outdated("tern")}});
  EXPECT_EQ(runJson(Verb::update), ExitCode::failed);
  EXPECT_EQ(field("success"), JsonValue(false));
  EXPECT_EQ(field("message"), JsonValue("Updated 1 of 2. Failed: tern."));
  EXPECT_EQ(field("installedCount"), JsonValue(1));
  ASSERT_NE(field("apps").array(), nullptr);
  EXPECT_EQ(field("apps").array()->size(), 2U);
  EXPECT_TRUE(err.empty());
}

TEST_F(CtlSession, ProgressGoesToATerminalAndChangesNothingThatIsPrinted) {
  know({outdated("quill")});
  const auto checked = [this](bool terminal) {
    onTerminal = terminal;
    answerDiscoveries({Apps{outdated("quill")}});
    EXPECT_EQ(runJson(Verb::check, {label("quill")}), ExitCode::done) << out;
    EXPECT_TRUE(err.empty());
    return out;
  };
  const auto piped = checked(false);
  EXPECT_TRUE(progress.empty());
  EXPECT_EQ(checked(true), piped);
  EXPECT_EQ(progress.back(), "") << "the line is taken away at the end";
}

}  // namespace
}  // namespace corvane
