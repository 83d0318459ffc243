#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "core/preferences/options_codec.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

constexpr auto kDefaults =
    "BLOCKING_PROCESS_ACTION=tell_user IGNORE_APP_STORE_APPS=no INTERRUPT_DND=yes LOGO=appstore NOTIFY=success "
    "PROMPT_TIMEOUT=86400 REOPEN=yes SYSTEMOWNER=0";

// What a shell that evaluates the argument twice, as the tool does, has then in `key`.
std::string evaluated(const std::string& argument, const std::string& key, const std::filesystem::path& folder) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return "no pipe";
  const auto child = ::fork();
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    if (::chdir(folder.c_str()) != 0) ::_exit(126);
    const auto script = R"(eval "$1"; eval "$1"; print -rn -- ")" + ("${" + key + "}") + "\"";
    ::execlp("zsh", "zsh", "--no-rcs", "-c", script.c_str(), "zsh", argument.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  std::string output;
  std::array<char, 256> bytes{};
  for (auto n = ::read(ends[0], bytes.data(), bytes.size()); n > 0; n = ::read(ends[0], bytes.data(), bytes.size()))
    output.append(bytes.data(), static_cast<std::size_t>(n));
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? output : "zsh failed";
}

TEST(InstallomatorOptions, DefaultsComposeToTheFullString) {
  EXPECT_EQ(composeInstallomatorOptions({}), kDefaults);
  EXPECT_EQ(parseInstallomatorOptions(kDefaults), InstallomatorOptions{});
  EXPECT_EQ(parseInstallomatorOptions(""), InstallomatorOptions{});
}

TEST(InstallomatorOptions, EveryKeyComesBackAndUnknownOnesSurvive) {
  const InstallomatorOptions options{.notify = "all",
                                     .blockingProcessAction = "quit_kill",
                                     .logo = "custom",
                                     .logoCustomPath = "/Library/Logos/a=b.icns",
                                     .ignoreAppStoreApps = true,
                                     .systemOwnerRoot = true,
                                     .forceInstall = true,
                                     .reopenApp = false,
                                     .interruptDND = false,
                                     .ignoreDndApps = "Safari,Quill",
                                     .proxy = "proxy:8080",
                                     .promptTimeout = -60,
                                     .unknown = {{"LOGGING", "REQ"}, {"odd key!", "x"}}};
  auto expected = options;
  expected.unknown = {{"LOGGING", "REQ"}, {"key!", "x"}};  // the token is cut at its blank
  EXPECT_EQ(parseInstallomatorOptions(composeInstallomatorOptions(options)), expected);
}

TEST(InstallomatorOptions, ParsesAsTheToolReadsIt) {
  const auto read = [](std::string_view text) { return parseInstallomatorOptions(text); };
  EXPECT_EQ(read("\tNOTIFY=all\n NOTIFY=silent  junk ").notify, "silent");
  EXPECT_EQ(read("PROXY=a=b").proxy, "a=b");
  EXPECT_EQ(read("IGNORE_DND_APPS=Final Cut Pro").ignoreDndApps, "Final");
  EXPECT_TRUE(read("IGNORE_APP_STORE_APPS=YES").ignoreAppStoreApps);
  EXPECT_FALSE(read("SYSTEMOWNER=yes").systemOwnerRoot);
  EXPECT_FALSE(read("INSTALL=FORCE").forceInstall);
  EXPECT_FALSE(read("REOPEN=No").reopenApp);
  EXPECT_TRUE(read("INTERRUPT_DND=maybe").interruptDND);
  for (const auto& [text, seconds] : {std::pair{"+90", 90}, {"-5", -5}, {"1h", 86400}, {"", 86400}, {"+-1", 86400}})
    EXPECT_EQ(read(std::string("PROMPT_TIMEOUT=") + text).promptTimeout, seconds) << text;
}

TEST(InstallomatorOptions, EmptyTextsLeaveTheirKeysOut) {
  InstallomatorOptions options{.logo = "custom", .logoCustomPath = "  ", .ignoreDndApps = " ", .proxy = "\t"};
  EXPECT_EQ(composeInstallomatorOptions(options), kDefaults);
  options.unknown["INSTALL"] = "force";
  EXPECT_EQ(composeInstallomatorOptions(options), kDefaults);
}

TEST(OptionValue, StandsAsInTheString) {
  EXPECT_EQ(optionValue("A=1 B==2 A=3", "A"), "3");
  EXPECT_EQ(optionValue("A=1 B==2", "B"), "=2");
  EXPECT_EQ(optionValue("A=1", "a"), std::nullopt);
  EXPECT_TRUE(optionIs("IGNORE_APP_STORE_APPS=Yes", "IGNORE_APP_STORE_APPS", "yes"));
  EXPECT_FALSE(optionIs("", "IGNORE_APP_STORE_APPS", ""));
}

TEST(OptionArguments, AUsersDomainGivesOnlyTheKeysOfTheTable) {
  const auto options = "NOTIFY=all downloadURL=http://x expectedTeamID=EVIL DEBUG=0 1X=2 PATH=/tmp";
  const auto user = optionArguments(options, OptionsSource::user);
  EXPECT_THAT(user.arguments, ElementsAre("NOTIFY='all'"));
  std::vector<std::string> keys;
  for (const auto& left : user.leftOut) keys.push_back(left.key);
  EXPECT_THAT(keys, ElementsAre("1X", "DEBUG", "PATH", "downloadURL", "expectedTeamID"));

  const auto managed = optionArguments(options, OptionsSource::managed);
  EXPECT_THAT(managed.arguments, ElementsAre("DEBUG='0'", "NOTIFY='all'", "PATH='/tmp'", "downloadURL='http://x'",
                                             "expectedTeamID='EVIL'"));
  ASSERT_EQ(managed.leftOut.size(), 1U);
  EXPECT_EQ(managed.leftOut[0].key, "1X");
}

TEST(OptionArguments, WhatTheToolComparesAsANumberMustBeOne) {
  for (const auto* value : {"a[$(touch${IFS}x)]", "-1", "1+1", "", "1234567890"}) {
    const auto options = "SYSTEMOWNER=" + std::string(value) + " PROMPT_TIMEOUT=" + value;
    EXPECT_THAT(optionArguments(options, OptionsSource::user).arguments, IsEmpty()) << value;
  }
  EXPECT_THAT(optionArguments("SYSTEMOWNER=1 PROMPT_TIMEOUT=600", OptionsSource::user).arguments,
              ElementsAre("PROMPT_TIMEOUT='600'", "SYSTEMOWNER='1'"));
}

TEST(OptionArguments, AShellSetsExactlyTheConfiguredTextAndRunsNothing) {
  const testing::TemporaryFolder folder;
  const std::vector<std::string> marks = {"'",    "''",      "\"",   "\\", "\\\\", "a b  c", "~",     "~root/x",
                                          "*",    "?[a-z]*", "=ls",  "==", "!!",   "!touch", "$HOME", "> x",
                                          "x\ty", "{a,b}",   "%s%n", "#c", "-n",   ""};
  std::vector<std::string> values = {
      "$(touch x)",      "`touch x`",  ";touch x", "a&touch x",  "| touch x", "'; touch x; '",        "\\'; touch x #",
      "\"; touch x; \"", "${(e)HOME}", "$((1+1))", "<(touch x)", "(touch x)", "Zoë – 数字 🦊", "\x01\x7f\xff"};
  values.insert(values.end(), marks.begin(), marks.end());
  for (const auto& value : values) {
    const auto argument = quotedAssignment("PROXY", value);
    ASSERT_TRUE(argument) << value;
    EXPECT_EQ(evaluated(*argument, "PROXY", folder.path()), value);
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(OptionArguments, LineBreaksNulAndOddNamesAreRefused) {
  using namespace std::string_view_literals;
  for (const auto value : {"a\nb"sv, "a\rb"sv, "a\0b"sv}) EXPECT_FALSE(quotedAssignment("PROXY", value));
  for (const auto key : {""sv, "1A"sv, "A B"sv, "A;B"sv, "A[1]"sv, "Ä"sv, "A-B"sv})
    EXPECT_FALSE(quotedAssignment(key, "x")) << key;
  EXPECT_EQ(quotedAssignment("_a9", ""), "_a9=''");
}

}  // namespace
}  // namespace corvane
