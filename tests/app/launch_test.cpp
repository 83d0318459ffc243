// What the application says and decides before its model stands.

#include "app/command_line.h"
#include "app/launch_log.h"
#include "app/single_instance.h"
#include "support/recording_log.h"
#include "support/set_lock.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(CommandLine, UsageShowsTheConfiguredTitleAndEveryOption) {
  EXPECT_EQ(usageText("Contoso Updates"),
            "Contoso Updates\n"
            "\n"
            "  --generate-diagnostic-bundle [--output <dir|file.zip>] [--verbose]\n"
            "      Write a diagnostic zip and print its path on stdout.\n"
            "      With no --output, the zip is written to /var/tmp.\n"
            "      Progress is written to stderr when stderr is a terminal, or with --verbose.\n"
            "\n"
            "  --clear-notifications\n"
            "      Remove delivered and scheduled Contoso Updates notifications, then exit.\n"
            "\n"
            "  --help\n"
            "      Show this usage.\n");
}

TEST(CommandLine, OptionsAreWholeArgumentsAnywhereAndUnknownOnesAreIgnored) {
  const std::vector<std::string_view> given{"-psn_0_1234", "--generate-diagnostic-bundle", "--clear-notifications",
                                            "--helpx", "-h"};
  const auto arguments = LaunchArguments::parse(given);
  EXPECT_TRUE(arguments.help);
  EXPECT_EQ(arguments.batchJob, "--clear-notifications");
}

TEST(CommandLine, OneAddressLeadsToThePrompt) {
  for (const auto* link : {"corvane://show-deferral-prompt", "corvane://show-deferral-prompt/",
                           "corvane://show-deferral-prompt?from=mail", "corvane://show-deferral-prompt#top"}) {
    const std::vector<std::string_view> given{"--background-launch", link};
    EXPECT_EQ(LaunchArguments::parse(given).promptLink, link);
  }
  for (const auto* other : {"corvane://show-deferral-prompts", "corvane:show-deferral-prompt",
                            "Corvane://show-deferral-prompt", "corvane://user@show-deferral-prompt",
                            "corvane://show-deferral-prompt:80", "https://show-deferral-prompt", "corvane://"}) {
    const std::vector<std::string_view> given{other};
    EXPECT_FALSE(LaunchArguments::parse(given).promptLink) << other;
  }
}

TEST(LaunchLine, TellsWhatIsKnownAndSaysUnknownForTheRest) {
  EXPECT_EQ(launchLine({.shortVersion = "4.1",
                        .build = "412",
                        .helperStatus = HelperStatus::requiresApproval,
                        .silentLaunch = true,
                        .backgroundLaunch = true,
                        .showDashboard = false,
                        .uid = 501}),
            "Launched v4.1 (412); helperStatus=requiresApproval; silentLaunch=true; backgroundLaunch=true; "
            "showDashboard=false; uid=501");
  EXPECT_EQ(launchLine({.helperStatus = HelperStatus::notFound, .showDashboard = true, .uid = 0}),
            "Launched vunknown (unknown); helperStatus=notFound; silentLaunch=false; backgroundLaunch=false; "
            "showDashboard=true; uid=0");
}

TEST(SingleInstance, OnlyAHolderStopsTheLaunchAndEveryOutcomeIsLogged) {
  using enum SessionLock::Outcome;
  const auto info = LogLevel::info;
  const auto warning = LogLevel::warning;
  const std::string support = "/Users/ada/Library/Application Support/Corvane";
  const std::string other = "Another instance is already running; this launch will exit without a menu bar item.";
  const auto noFolder =
      "Could not create " + support + " for the single-instance lock (Read-only file system); continuing.";
  const auto noFile = "Could not open the single-instance lock at " + support + "/gui.instance.lock; continuing.";
  const std::tuple<SessionLock::Attempt, bool, bool, LogLevel, std::string> rows[] = {
      {{taken, ""}, true, true, info, "This is the only Corvane instance (launchAgent=true)."},
      {{taken, ""}, false, true, info, "This is the only Corvane instance (launchAgent=false)."},
      {{heldByOther, ""}, false, false, info, other},
      {{couldNotMakeFolder, "Read-only file system"}, false, true, warning, noFolder},
      {{couldNotOpen, "Permission denied"}, false, true, warning, noFile}};
  for (const auto& [attempt, byAgent, goesOn, level, line] : rows) {
    RecordingLog log;
    SetLock lock;
    lock.answer = attempt;
    EXPECT_EQ(claimSingleInstance(lock, byAgent, Logger(log, "Corvane")), goesOn) << line;
    const RecordingLog::Line expected{level, "Corvane: " + line};
    EXPECT_EQ(log.lines(), std::vector{expected});
  }
}

TEST(StateClaim, ACorvanectlAtWorkIsWaitedForAndNothingStopsTheLaunch) {
  using Outcome = SessionLock::Outcome;
  const std::tuple<SessionLock::Attempt, SessionLock::Attempt, int, std::vector<std::string>> rows[] = {
      {{Outcome::taken, ""}, {}, 0, {}},
      {{Outcome::heldByOther, ""},
       {Outcome::taken, ""},
       1,
       {"Corvane: A corvanectl is at work; this launch goes on when it has ended."}},
      {{Outcome::couldNotOpen, "Permission denied"},
       {},
       0,
       {"Corvane: Could not claim the state by /state.lock (Permission denied); continuing."}}};
  for (const auto& [attempt, afterWaiting, waits, expected] : rows) {
    RecordingLog log;
    SetLock lock;
    lock.file = "/state.lock";
    lock.answer = attempt;
    lock.answerAfterWaiting = afterWaiting;
    claimState(lock, Logger(log, "Corvane"));
    EXPECT_EQ(lock.waits, waits);
    std::vector<std::string> lines;
    for (const auto& line : log.lines()) lines.push_back(line.message);
    EXPECT_EQ(lines, expected);
  }
}

}  // namespace
}  // namespace corvane
