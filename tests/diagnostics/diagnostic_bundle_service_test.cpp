// The bundle from end to end over a scripted zip, with real folders: what goes in, what stays out, where it goes, and
// how each failure is told.
#include "diagnostics/diagnostic_bundle_service.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "diagnostics/staged_bundle.h"
#include "platform/posix/posix_files.h"
#include "platform/scripted/scripted_accounts.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/scripted_surroundings.h"
#include "support/scripted_installation.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

constexpr const char* kName = "Corvane-Diagnostic-2026-11-01-130000";  // 12:00 UTC is 13:00 here

struct DiagnosticBundle : ::testing::Test, testing::ScriptedInstallation {
  DiagnosticBundle() {
    fs::create_directories(places.home);
    fs::create_directories(temporary);
    accounts.desktopFolder = disk.path() / "desktop";
    fs::create_directories(*accounts.desktopFolder);
  }

  // Takes the staged files as zip would find them, and makes a zip of them by name only.
  ScriptedChild zipped(const ChildSpec& spec) {
    const fs::path staging = spec.folder;
    EXPECT_EQ(fs::status(staging).permissions(), fs::perms::owner_all);
    for (const auto& entry : fs::recursive_directory_iterator(staging / spec.arguments[3])) {
      auto name = entry.path().lexically_relative(staging / spec.arguments[3]).string();
      EXPECT_FALSE(entry.is_symlink()) << name;
      content[entry.is_directory() ? name + "/" : name] =
          entry.is_directory() ? "" : TemporaryFolder::read(entry.path());
    }
    if (zip.exit && zip.exit->code == 0) std::ofstream(spec.arguments[2]) << "zip of " << spec.arguments[3];
    if (afterZip) afterZip();
    return zip;
  }

  Result<fs::path> generate(std::optional<fs::path> output = std::nullopt) {
    content.clear();
    std::optional<Result<fs::path>> answer;
    service.generateBundle(std::move(output), [&](Result<fs::path> result) { answer = std::move(result); });
    EXPECT_FALSE(answer) << "answered in the turn of the question";
    machine.runUntilIdle();
    EXPECT_TRUE(answer);
    EXPECT_TRUE(fs::is_empty(temporary)) << "the staging folder stays behind";
    return answer ? *answer : failure("test", 0, "no answer");
  }
  std::string failureOf(std::optional<fs::path> output = std::nullopt) {
    const auto result = generate(std::move(output));
    return result ? "wrote " + result->string() : result.error().text;
  }
  [[nodiscard]] std::vector<std::string> names(std::string_view below = "") const {
    std::vector<std::string> found;
    for (const auto& [name, bytes] : content)
      if (name.starts_with(below)) found.push_back(name.substr(below.size()));
    return found;
  }
  [[nodiscard]] std::vector<std::string> summary() const {
    std::vector<std::string> lines;
    std::istringstream text(content.at("metadata.txt"));
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
  }
  void put(const fs::path& file, std::string_view bytes) const {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
  }
  void putPreferences(const fs::path& file, const PlistDict& values) const {
    put(file, *writePlist(PlistValue(values), PlistFormat::binary));
  }
  [[nodiscard]] PlistDict preferencesIn(const std::string& name) const {
    const auto document = parsePlist(content.at(name));
    EXPECT_TRUE(document && document->format == PlistFormat::xml) << name;
    return document && document->root.dict() ? *document->root.dict() : PlistDict();
  }

  TemporaryFolder disk;
  fs::path temporary = disk.path() / "tmp";
  CorvaneConstants places{.root = disk.path() / "root", .home = disk.path() / "home"};
  PosixFiles realFiles;
  ScriptedLocale locale{"Europe/Berlin"};
  ScriptedAccounts accounts;
  ScriptedConsoleSessions console;
  LoggingService logging{{.system = places.logFile(), .archive = places.logArchiveFolder(), .fallback = std::nullopt},
                         LogRole::user,
                         realFiles,
                         machine.clock(),
                         [] { return Calendar::utc(); }};
  HelperBackgroundPatchStateStore helperState{places.helperState(), realFiles, log};
  ReceiptManager receipts{places.receipts(), realFiles, log};
  ScriptedChild zip;
  std::function<void()> afterZip;
  ScriptedChild groups{.exit = ChildExit{.output = "  staff everyone\nadmin \n"}};
  std::map<std::string, std::string> content;
  ScriptedChildProcesses children{machine.main(), [this](const ChildSpec& spec) {
                                    return spec.executable == "/usr/bin/zip" ? zipped(spec) : groups;
                                  }};
  DiagnosticBundleService service{{.main = machine.main(),
                                   .work = machine.work(),
                                   .clock = machine.clock(),
                                   .locale = locale,
                                   .entropy = entropy,
                                   .children = children,
                                   .accounts = accounts,
                                   .console = console,
                                   .bundle = bundle,
                                   .installation = ScriptedInstallation::service,
                                   .helperState = helperState,
                                   .receipts = receipts,
                                   .log = logging,
                                   .places = places,
                                   .operatingSystem = "Version 14.5 (Build 23F79)",
                                   .temporaryFolder = temporary}};
};

TEST_F(DiagnosticBundle, OfABareMachineHoldsTheSummaryAndAnEmptyFolderForPreferences) {
  bundle.bundleShortVersion.reset();
  bundle.digest.reset();
  registration.printCode.reset();
  registration.current = HelperStatus::notRegistered;
  groups.exit = failure("CRVChildProcess", ENOENT, "no such tool");
  EXPECT_EQ(generate(), *accounts.desktopFolder / (std::string(kName) + ".zip"));
  EXPECT_THAT(names(), ElementsAre("metadata.txt", "prefs/"));
  EXPECT_THAT(
      summary(),
      ElementsAre(
          "# Corvane diagnostic bundle", "Generated: 2026-11-01T12:00:00Z", "", "## App", "Version: unknown (400)",
          "Bundle path: /Applications/Corvane.app", "", "## macOS", "Version 14.5 (Build 23F79)", "", "## Helper",
          "SMAppService status: notRegistered", "Operational: no", "Last registered cdhash: (none)",
          "Current bundled cdhash: (could not be read)",
          "Heartbeat: (file missing — helper may not be running, or this build predates the heartbeat feature)",
          "launchctl print exit: (could not invoke /bin/launchctl)", "", "## Installomator",
          "Installomator.sh: missing", "fragments/functions.sh: missing — LabelVersionHelper cannot use the fast path",
          "fragments/labels: (missing)", "", "## Logging", "GUI log path: " + places.logFile().string(),
          "Using user fallback: no", "", "## Running user", "Username: ada", "Groups: ", "In admin group: no",
          "In staff group: no", "", "## Console user", "Username: (none)", "Fallback log: (no console session)"));
  EXPECT_TRUE(content.at("metadata.txt").ends_with("session)\n"));
}

TEST_F(DiagnosticBundle, TellsOfAMachineThatIsWhole) {
  bundle.digest = "0123456789abcdef";
  ScriptedInstallation::service.recordCurrentHelperCDHashIfNeeded();
  beat();
  machine.advance(7900ms);
  put(places.installomatorScript(), "#!/bin/zsh");
  put(places.fragmentsPath() / "functions.sh", "");
  for (const auto* name : {"quill.sh", "stamp.sh", "notes.txt"}) put(places.labelsFolder() / name, "");
  console.known = std::vector<ConsoleSession>{{.user = "early", .loggedInAt = machine.now() - 48h},
                                              {.user = "grace", .loggedInAt = machine.now()}};
  accounts.homes = {{"early", "/Users/early"}, {"grace", disk.path() / "grace"}};
  put(disk.path() / "grace/Library/Logs/Corvane/crv.log", "12345");
  ASSERT_TRUE(generate());
  EXPECT_THAT(
      summary(),
      ::testing::IsSupersetOf(
          {"Version: 4.0.0 (400)", "SMAppService status: enabled", "Operational: yes",
           "Last registered cdhash: 0123456789ab…", "Current bundled cdhash: 0123456789ab…",
           "Heartbeat: 2026-11-01T12:00:00Z (7s ago)",
           "launchctl print exit: 0 (0 = loaded; non-zero is informational on macOS 26+)", "Installomator.sh: present",
           "fragments/functions.sh: present", "fragments/labels: 2 label file(s)", "Groups: staff, everyone, admin",
           "In admin group: yes", "In staff group: yes", "Username: grace", "Exists: yes (5 bytes)"}));
  const auto id = children.started().front();
  EXPECT_EQ(id.executable, "/usr/bin/id");
  EXPECT_THAT(id.arguments, ElementsAre("-Gn"));

  for (const auto* nobody : {"loginwindow", "unknown", ""}) {
    console.known = std::vector{ConsoleSession{.user = nobody, .loggedInAt = {}}};
    ASSERT_TRUE(generate());
    EXPECT_EQ(summary().back(), "Fallback log: (no console session)") << nobody;
  }
}

TEST_F(DiagnosticBundle, TakesLogsReportsAndEventsAsTheyLie) {
  put(places.logFile(), "system");
  put(places.logFolder() / "old/deep/crv.1.log", "deep");
  put(places.logArchiveFolder() / "crv-1.log", "archived");
  put(places.userLogFile(), "mine");
  put(places.deferralEventsFolder() / "ada.jsonl", "{}\n");
  const auto systemReports = places.root / "Library/Logs/DiagnosticReports";
  const auto userReports = places.home / "Library/Logs/DiagnosticReports";
  put(systemReports / "Corvane-1.ips", "of the system");
  put(systemReports / "CorvaneRootHelper.diag", "helper");
  put(systemReports / "Corvane-1.txt", "no report");
  put(systemReports / "Finder.ips", "of another");
  put(userReports / "Corvane-1.ips", "of the user");
  ASSERT_TRUE(generate());
  EXPECT_THAT(names(),
              ElementsAre("crash-reports/", "crash-reports/Corvane-1.ips", "crash-reports/CorvaneRootHelper.diag",
                          "deferral-events/", "deferral-events/ada.jsonl", "logs-archive/", "logs-archive/crv-1.log",
                          "logs-user/", "logs-user/crv.log", "logs/", "logs/crv.log", "logs/old/", "logs/old/deep/",
                          "logs/old/deep/crv.1.log", "metadata.txt", "prefs/"));
  EXPECT_EQ(content["logs/old/deep/crv.1.log"], "deep");
  EXPECT_EQ(content["logs-user/crv.log"], "mine");
  EXPECT_EQ(content["crash-reports/Corvane-1.ips"], "of the user");

  fs::remove_all(userReports);
  fs::remove(systemReports / "Corvane-1.ips");
  fs::remove(systemReports / "CorvaneRootHelper.diag");
  ASSERT_TRUE(generate());
  EXPECT_THAT(names("crash-reports"), IsEmpty());
}

TEST_F(DiagnosticBundle, LeavesOutWhateverAStrangerLaidIntoItsFolders) {
  const auto secret = disk.write("root-only/secret", "secret");
  const auto events = places.deferralEventsFolder();
  put(events / "ada.jsonl", "mine");
  fs::create_symlink(secret, events / "link.jsonl");
  fs::create_directory_symlink(secret.parent_path(), events / "folder");
  fs::create_hard_link(secret, events / "second-name.jsonl");
  ASSERT_EQ(::mkfifo((events / "pipe.jsonl").c_str(), 0666), 0);  // would never end
  put(secret.parent_path() / "crv.log", "secret");
  fs::create_directories(places.userLogFile().parent_path().parent_path());
  fs::create_directory_symlink(secret.parent_path(), places.userLogFile().parent_path());
  putPreferences(secret.parent_path() / "elsewhere.plist", {{"GitHubAPIToken", "of another"}});
  fs::create_directories(places.userPreferencesPath().parent_path());
  fs::create_symlink(secret.parent_path() / "elsewhere.plist", places.userPreferencesPath());
  ASSERT_TRUE(generate());
  EXPECT_THAT(names("deferral-events/"), ElementsAre("", "ada.jsonl"));
  EXPECT_THAT(names("logs-user"), IsEmpty());
  EXPECT_THAT(names("prefs/"), ElementsAre(""));
}

TEST_F(DiagnosticBundle, BlacksOutWebhooksOfBothDomainsAndNothingElse) {
  putPreferences(places.userPreferencesPath(), {{"WebhookURLSlack", "https://hooks/secret"},
                                                {"WebhookURLTeams", PlistArray{"https://teams/secret"}},
                                                {"GitHubAPIToken", "token"},
                                                {"DiscoveredAppsData", PlistData{"large"}},
                                                {"VerboseMode", true}});
  putPreferences(places.managedPreferencesPath(), {{"DaysUntilReset", 7}});
  ASSERT_TRUE(generate());
  EXPECT_EQ(preferencesIn("prefs/user.plist"), (PlistDict{{"WebhookURLSlack", "<redacted>"},
                                                          {"WebhookURLTeams", "<redacted>"},
                                                          {"GitHubAPIToken", "token"},
                                                          {"VerboseMode", true}}));
  EXPECT_EQ(preferencesIn("prefs/managed.plist"), (PlistDict{{"DaysUntilReset", 7}}));

  put(places.userPreferencesPath(), *writePlist(PlistValue(PlistArray{"no dictionary"}), PlistFormat::xml));
  put(places.managedPreferencesPath(), "<plist><dict><key>torn");
  ASSERT_TRUE(generate());
  EXPECT_THAT(names("prefs/"), ElementsAre(""));
}

TEST_F(DiagnosticBundle, HoldsTheHelpersStateAndTheNewestReceipts) {
  fs::create_directories(places.supportFolder());
  HelperPatchState state;
  state.lastScheduledDiscoverySummary = ScheduledDiscoverySummary{
      .runID = "r1", .completedAt = dateFromSecondsSince2001(800000000.5), .appCount = 3, .pendingUpdateCount = 1};
  ASSERT_TRUE(helperState.write(state));
  for (int i = 0; i < 60; ++i)
    ASSERT_TRUE(receipts.append({.label = Label("label" + std::to_string(i)),
                                 .timestamp = machine.now() + std::chrono::minutes(i),
                                 .version = "1"}));
  ASSERT_TRUE(generate());
  EXPECT_EQ(content["helper-state.json"],
            "{\n  \"lastScheduledDiscoverySummary\": {\n    \"appCount\": 3,\n    \"completedAt\": 800000000.5,\n"
            "    \"pendingUpdateCount\": 1,\n    \"runID\": \"r1\"\n  }\n}");
  const auto& lines = content["receipts.jsonl"];
  EXPECT_EQ(std::ranges::count(lines, '\n'), 50);
  EXPECT_THAT(lines, StartsWith("{\"installomatorExitCode\":0,\"label\":\"label59\",\"status\":\"success\","
                                "\"timestamp\":\"2026-11-01T12:59:00Z\",\"version\":\"1\"}\n"));
  EXPECT_THAT(lines, HasSubstr("\"label10\""));
  EXPECT_THAT(lines, Not(HasSubstr("\"label9\"")));
}

TEST_F(DiagnosticBundle, OfRootIsAboutThePersonAtTheScreen) {
  const auto person = disk.path() / "grace";
  put(person / "Library/Logs/Corvane/crv.log", "of grace");
  putPreferences(person / "Library/Preferences/org.corvane.Corvane.plist", {{"VerboseMode", true}});
  put(places.userLogFile(), "of root");
  console.known = std::vector<ConsoleSession>{{.user = "grace", .loggedInAt = {}}};
  accounts.homes = {{"grace", person}};
  accounts.root = true;
  EXPECT_EQ(generate(), *accounts.desktopFolder / (std::string(kName) + ".zip"));
  EXPECT_EQ(content["logs-user/crv.log"], "of grace");
  EXPECT_TRUE(content.contains("prefs/user.plist"));
  accounts.root = false;
  ASSERT_TRUE(generate());
  EXPECT_EQ(content["logs-user/crv.log"], "of root");
}

TEST_F(DiagnosticBundle, GoesWhereItIsToldAndOverwritesOnlyWhatWasNamed) {
  const auto folder = disk.path() / "made/for it";
  const auto first = generate(folder);
  ASSERT_EQ(first, folder / (std::string(kName) + ".zip"));
  EXPECT_EQ(TemporaryFolder::read(*first), std::string("zip of ") + kName);
  EXPECT_EQ(fs::status(*first).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  const auto victim = disk.write("victim", "untouched");
  fs::create_symlink(victim, folder / (std::string(kName) + "-1.zip"));
  fs::create_symlink(disk.path() / "nowhere", folder / (std::string(kName) + "-2.zip"));
  EXPECT_EQ(generate(folder), folder / (std::string(kName) + "-3.zip"));

  const auto named = disk.write("there/x.ZIP", "old");
  EXPECT_EQ(generate(named), named);
  EXPECT_THAT(TemporaryFolder::read(named), StartsWith("zip of "));
  fs::remove(named);
  fs::create_symlink(victim, named);
  EXPECT_EQ(generate(named), named);
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(named)));
  EXPECT_EQ(TemporaryFolder::read(victim), "untouched");
  EXPECT_FALSE(fs::exists(disk.path() / "nowhere"));

  const auto zipCall = children.started().back();
  EXPECT_EQ(zipCall.executable, "/usr/bin/zip");
  EXPECT_THAT(zipCall.arguments, ElementsAre("-r", "-q", StartsWith(zipCall.folder + "/"), kName));
}

TEST_F(DiagnosticBundle, TellsOfAnOutputThatCannotBe) {
  const auto refused = [](const fs::path& path) {
    return "Could not write the diagnostic bundle to " + path.string() + ".";
  };
  const auto file = disk.write("file", "kept");
  fs::create_symlink(disk.path() / "nowhere", disk.path() / "dangling");
  fs::create_directories(disk.path() / "folder.zip/kept");
  for (const auto& path : {file, file / "below", file / "x.zip", disk.path() / "dangling", disk.path() / "folder.zip"})
    EXPECT_EQ(failureOf(path), refused(path));
  EXPECT_EQ(TemporaryFolder::read(file), "kept");
  EXPECT_TRUE(fs::exists(disk.path() / "folder.zip/kept"));

  const auto crowded = disk.path() / "crowded";
  for (int i = 0; i < 1000; ++i)
    put(crowded / (kName + (i == 0 ? std::string() : "-" + std::to_string(i)) + ".zip"), "taken");
  EXPECT_EQ(failureOf(crowded), refused(crowded));
  fs::remove(crowded / (std::string(kName) + "-999.zip"));
  EXPECT_EQ(generate(crowded), crowded / (std::string(kName) + "-999.zip"));

  accounts.desktopFolder.reset();
  EXPECT_EQ(failureOf(), "Could not find the user's Desktop folder.");
}

TEST_F(DiagnosticBundle, LeavesNothingBehindOnAFullDisk) {
  rlimit whole{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &whole), 0);
  auto* const handler = ::signal(SIGXFSZ, SIG_IGN);
  afterZip = [&] {
    const rlimit full{.rlim_cur = 8, .rlim_max = whole.rlim_max};  // as if that many bytes were free
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  };
  const auto old = disk.write("there/old.zip", "old");
  for (const auto& output : {old.parent_path(), old}) {
    EXPECT_EQ(failureOf(output), "Could not write the diagnostic bundle to " + output.string() + ".");
    ::setrlimit(RLIMIT_FSIZE, &whole);
  }
  ::signal(SIGXFSZ, handler);
  EXPECT_EQ(std::distance(fs::directory_iterator(old.parent_path()), {}), 1);
  EXPECT_EQ(TemporaryFolder::read(old), "old");
}

TEST_F(DiagnosticBundle, TellsWhatZipSaid) {
  const std::pair<Result<ChildExit>, const char*> rows[] = {
      {ChildExit{.code = 14, .errors = "\nzip error: no space \n"}, "zip exited with code 14: zip error: no space"},
      {ChildExit{.code = 12, .errors = " \n"}, "zip exited with code 12."},
      {ChildExit{.code = 3, .errors = "\xff"}, "zip exited with code 3."},
      {failure("CRVChildProcess", ENOENT, "zip cannot be started"), "zip cannot be started"}};
  for (const auto& [exit, text] : rows) {
    zip.exit = exit;
    EXPECT_EQ(failureOf(), text);
    EXPECT_TRUE(fs::is_empty(*accounts.desktopFolder));
  }
  fs::remove_all(temporary);
  put(temporary, "no folder");
  std::optional<Result<fs::path>> answer;
  service.generateBundle(std::nullopt, [&](Result<fs::path> result) { answer = std::move(result); });
  machine.runUntilIdle();
  EXPECT_EQ(answer->error().code, ENOTDIR);
}

TEST_F(DiagnosticBundle, IsGivenUpWithItsService) {
  zip.takes = 1h;
  bool answered = false;
  {
    DiagnosticBundleService shortLived({machine.main(), machine.work(), machine.clock(), locale, entropy, children,
                                        accounts, console, bundle, ScriptedInstallation::service, helperState, receipts,
                                        logging, places, "", temporary});
    shortLived.toDesktop()([&](const auto&) { answered = true; });
    machine.runUntilIdle();
    EXPECT_EQ(children.running(), 1U);
    EXPECT_FALSE(fs::is_empty(temporary));
  }
  machine.advance(2h);
  EXPECT_EQ(children.running(), 0U);
  EXPECT_FALSE(answered);
  EXPECT_TRUE(fs::is_empty(temporary));
}

}  // namespace
}  // namespace corvane
