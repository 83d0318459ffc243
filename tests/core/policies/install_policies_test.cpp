// What an installation will do, what it meant, and what follows.

#include "core/policies/deferral_install_behavior_resolver.h"
#include "core/policies/installomator_exit_code.h"
#include "core/policies/mac_app_store_update_policy.h"
#include "core/policies/patch_error_follow_up.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(InstallomatorExitCode, CountsEverythingButTheKnownExceptionsAsAFailedInstall) {
  const std::set<std::int64_t> harmless{-2, 0, 6, 10, 11, 12, 13, 23, 24, 25, 75};
  for (std::int64_t code = -3; code < 300; ++code)
    EXPECT_EQ(InstallomatorExitCode::countsAsInstallFailure(code), !harmless.contains(code)) << code;
}

TEST(InstallomatorExitCode, TellsEveryKnownCodeApart) {
  const std::int64_t known[] = {-2, -1, 0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,  12,  13,  14,  15, 16,
                                20, 21, 22, 23, 24, 25, 50, 75, 77, 89, 95, 98, 99, 126, 127, 130, 137, 143};
  std::set<std::string> names;
  std::set<std::string> descriptions;
  const auto unknown = InstallomatorExitCode::detail(222, false);
  for (const auto code : known) {
    const auto detail = InstallomatorExitCode::detail(code, false);
    EXPECT_TRUE(names.insert(detail.shortName).second) << code;
    EXPECT_TRUE(descriptions.insert(detail.description).second) << code;
    EXPECT_NE(detail.description, unknown.description) << code;
    EXPECT_LE(detail.shortName.size(), 26U) << "a badge: " << detail.shortName;
    EXPECT_TRUE(detail.description.ends_with('.')) << detail.description;
  }
}

TEST(InstallomatorExitCode, NamesSignalsAndUnknownCodes) {
  EXPECT_EQ(InstallomatorExitCode::detail(139, false).shortName, "Ended by signal 11");
  EXPECT_EQ(InstallomatorExitCode::detail(42, false).shortName, "Error 42");
  EXPECT_EQ(InstallomatorExitCode::detail(-7, true).shortName, "Error -7");
  EXPECT_EQ(InstallomatorExitCode::detail(193, false).shortName, "Error 193");
}

TEST(InstallomatorExitCode, SpeaksOfTheStagedInstallerWhereOneWasUsed) {
  for (const std::int64_t code : {2, 3, 4, 5, 8, 20, 21, 22}) {
    const auto staged = InstallomatorExitCode::detail(code, true).description;
    EXPECT_NE(staged.find("downloaded ahead"), std::string::npos) << code;
    EXPECT_NE(staged, InstallomatorExitCode::detail(code, false).description) << code;
  }
  EXPECT_EQ(InstallomatorExitCode::detail(11, true), InstallomatorExitCode::detail(11, false));
}

TEST(DeferralInstallBehaviorResolver, MapsTheBlockingActionOfAnOpenApplication) {
  using enum DeferralInstallBehavior;
  const std::pair<std::string_view, DeferralInstallBehavior> cases[] = {
      {"BLOCKING_PROCESS_ACTION=ignore", ignore},
      {"BLOCKING_PROCESS_ACTION=quit", quit},
      {"BLOCKING_PROCESS_ACTION=quit_kill", quitThenForceQuit},
      {"BLOCKING_PROCESS_ACTION=kill", killed},
      {"BLOCKING_PROCESS_ACTION=silent_fail", skippedWhileOpen},
      {"BLOCKING_PROCESS_ACTION=prompt_user", askedToQuit},
      {"BLOCKING_PROCESS_ACTION=prompt_user_then_kill", askedBeforeForceQuit},
      {"BLOCKING_PROCESS_ACTION=prompt_user_loop", askedAgainInAnHour},
      {"BLOCKING_PROCESS_ACTION=tell_user", toldToQuit},
      {"BLOCKING_PROCESS_ACTION=tell_user_then_kill", toldToQuitOrForceQuit},
      {"BLOCKING_PROCESS_ACTION=Kill", skippedWhileOpen},  // the tool knows lower case only
      {"BLOCKING_PROCESS_ACTION=", skippedWhileOpen},
      {"", toldToQuit},
      {"NOTIFY=silent", toldToQuit},
      {"BLOCKING_PROCESS_ACTION=kill BLOCKING_PROCESS_ACTION=quit", quit},
  };
  for (const auto& [options, behavior] : cases) {
    const DeferralInstallBehaviorResolver::Setting open{.isOpen = true, .installomatorOptions = options};
    EXPECT_EQ(DeferralInstallBehaviorResolver::behavior(open, {}), behavior) << options;
    EXPECT_EQ(DeferralInstallBehaviorResolver::behavior(open, {.blocksNothing = true}), ignore) << options;
  }
}

TEST(DeferralInstallBehaviorResolver, UsesTheOwnUpdateToolUnlessAnOptionSwitchesItOff) {
  using enum DeferralInstallBehavior;
  const std::pair<std::string_view, DeferralInstallBehavior> cases[] = {
      {"", ownUpdateTool},
      {"BLOCKING_PROCESS_ACTION=kill", ownUpdateTool},
      {"INSTALL=force", toldToQuit},
      {"IGNORE_APP_STORE_APPS=yes", toldToQuit},
      {"INSTALL=Force", ownUpdateTool},
      {"IGNORE_APP_STORE_APPS=YES", toldToQuit},
      {"IGNORE_APP_STORE_APPS=no", ownUpdateTool},
      {"updateTool=", toldToQuit},
  };
  for (const auto& [options, behavior] : cases) {
    const DeferralInstallBehaviorResolver::Setting open{.isOpen = true, .installomatorOptions = options};
    EXPECT_EQ(DeferralInstallBehaviorResolver::behavior(open, {.ownUpdateToolExists = true}), behavior) << options;
  }
}

TEST(DeferralInstallBehaviorResolver, UpdatesAClosedApplicationWithTheOthersOrInTheBackground) {
  using enum DeferralInstallBehavior;
  const LabelInstallFacts facts{.ownUpdateToolExists = true, .blocksNothing = true};
  EXPECT_EQ(DeferralInstallBehaviorResolver::behavior({}, facts), updatesWhenInstalled);
  EXPECT_EQ(DeferralInstallBehaviorResolver::behavior({.backgroundPatchClosedAppsEnabled = true}, facts),
            updatesInBackground);
}

TEST(MacAppStoreUpdatePolicy, KnowsACopyOfTheStoreByItsReceipt) {
  VirtualMachine machine;
  ScriptedFiles files(machine.clock());
  files.put("/Applications/Quill.app/Contents/_MASReceipt/receipt", "receipt");
  files.put("/Applications/Other.app/Contents/Info.plist", "");
  EXPECT_TRUE(MacAppStoreUpdatePolicy::hasMacAppStoreReceipt("/Applications/Quill.app", files));
  EXPECT_TRUE(MacAppStoreUpdatePolicy::hasMacAppStoreReceipt("/Applications/Quill.app/", files));
  EXPECT_FALSE(MacAppStoreUpdatePolicy::hasMacAppStoreReceipt("/Applications/Other.app", files));
  EXPECT_FALSE(MacAppStoreUpdatePolicy::hasMacAppStoreReceipt("", files));
  EXPECT_FALSE(MacAppStoreUpdatePolicy::hasMacAppStoreReceipt(std::nullopt, files));
}

TEST(MacAppStoreUpdatePolicy, ReplacesStoreCopiesOnlyWhenTheOptionsSayYes) {
  const std::pair<std::string_view, bool> cases[] = {{"", false},
                                                     {"IGNORE_APP_STORE_APPS=no", false},
                                                     {"NOTIFY=all IGNORE_APP_STORE_APPS=YES", true},
                                                     {"IGNORE_APP_STORE_APPS=yes IGNORE_APP_STORE_APPS=no", false},
                                                     {"IGNORE_APP_STORE_APPS", false}};
  for (const auto& [options, replaces] : cases)
    EXPECT_EQ(MacAppStoreUpdatePolicy::replacesAppStoreApps(options), replaces) << options;
}

Labels labels(std::initializer_list<const char*> names) {
  Labels list;
  for (const auto* name : names) list.emplace_back(name);
  return list;
}

TEST(PatchErrorFollowUp, FindsTheLabelsThatTheMessageNamesAsFailed) {
  const auto attempted = labels({"zoom", "quill", "zoomclient", "v2.tool"});
  const std::pair<std::string_view, Labels> cases[] = {
      {"Updated 2 of 4. Failed: quill, zoom.", labels({"zoom", "quill"})},
      {"Updated 3 of 4. Failed: zoomclient.", labels({"zoomclient"})},
      {"Updated 3 of 4. Failed: v2.tool.", labels({"v2.tool"})},
      {"Updated 3 of 4. Failed: zoom, stranger", labels({"zoom"})},
      {"Updated 3 of 4. Failed: quill. See zoom.", labels({"quill"})},
      {"Updated 4 of 4.", {}},
      {"Failed to start patching: zoom", {}},
      {"Failed: ", {}},
      {"", {}},
  };
  for (const auto& [message, errored] : cases)
    EXPECT_EQ(PatchErrorFollowUp::erroredLabels(message, attempted), errored) << message;
}

}  // namespace
}  // namespace corvane
