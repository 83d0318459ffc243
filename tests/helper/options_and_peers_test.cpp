#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "base/plist.h"
#include "helper/console_preference_domains.h"
#include "helper/console_user.h"
#include "helper/helper_options.h"
#include "helper/patch_runner.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

Result<HelperOptions> parse(std::vector<const char*> arguments) { return HelperOptions::parse(arguments); }

TEST(HelperOptions, TakesItsRootFromTheCommandLineAndRefusesAllElse) {
  EXPECT_EQ(parse({})->root, "/");
  const auto all = parse({"--root", "/sample/./tree", "--user", "ann", "--user-home", "/home/ann"});
  ASSERT_TRUE(all);
  EXPECT_EQ(all->root, "/sample/tree");
  EXPECT_EQ(all->user, "ann");
  EXPECT_EQ(all->userHome, "/home/ann");
  for (const auto& wrong : std::vector<std::vector<const char*>>{{"--root"},
                                                                 {"--root", ""},
                                                                 {"--root", "relative"},
                                                                 {"--root", "/a", "--root", "/b"},
                                                                 {"--port", "1"},
                                                                 {"x"}})
    EXPECT_FALSE(parse(wrong)) << wrong.front();
}

TEST(ConsoleUser, MayAskWithRootAndTheHelperItself) {
  EXPECT_TRUE(mayAsk(0, 0, std::nullopt));
  EXPECT_TRUE(mayAsk(501, 0, 501));
  EXPECT_TRUE(mayAsk(502, 502, std::nullopt));
  EXPECT_FALSE(mayAsk(502, 0, 501));
  EXPECT_FALSE(mayAsk(502, 0, std::nullopt));
  EXPECT_EQ(activeUserOfSeat("# This is private data.\nIS_SEAT0=1\nACTIVE=c1\nACTIVE_UID=1000\n"), 1000U);
  EXPECT_FALSE(activeUserOfSeat("ACTIVE_UID=12x\n"));
  EXPECT_FALSE(activeUserOfSeat(""));
}

TEST(ConsolePreferences, AreReadOnlyFromARegularFileOfThatUser) {
  const testing::TemporaryFolder folder;
  const auto file = folder.path() / "user.plist";
  std::vector<std::string> told;
  std::optional<ConsoleUser> user = ConsoleUser{.uid = geteuid(), .home = folder.path()};
  const ConsolePreferenceDomains domains({.managed = folder.path() / "managed.plist",
                                          .consoleUser = [&] { return user; },
                                          .userFile = [&](const auto& home) { return home / "user.plist"; }},
                                         [&](std::string_view text) { told.emplace_back(text); });
  EXPECT_TRUE(domains.user().values->empty());
  std::ofstream(file) << writePlist(PlistDict{{"AppTitle", "Ours"}}, PlistFormat::xml);
  ASSERT_EQ(domains.user().values->size(), 1U);
  EXPECT_EQ(domains.user().version, domains.user().version);

  user.reset();
  EXPECT_TRUE(domains.user().values->empty()) << "nobody sits at the machine";
  user = ConsoleUser{.uid = geteuid(), .home = folder.path()};

  std::filesystem::rename(file, folder.path() / "aside.plist");
  std::filesystem::create_symlink(folder.path() / "aside.plist", file);
  EXPECT_TRUE(domains.user().values->empty()) << "links are not followed";
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_TRUE(domains.user().values->empty()) << "a pipe must not be waited for";
  std::filesystem::remove(file);
  std::ofstream(file) << "<plist><dict><key>torn";
  EXPECT_TRUE(domains.user().values->empty());
  EXPECT_EQ(told.size(), 3U) << "each state is told once";
  if (geteuid() == 0) {
    user->uid = 12345;
    std::filesystem::remove(file);
    std::ofstream(file) << writePlist(PlistDict{{"AppTitle", "Theirs"}}, PlistFormat::xml);
    ASSERT_EQ(chown(file.c_str(), 54321, 54321), 0);
    EXPECT_TRUE(domains.user().values->empty()) << "the file of a third person";
  }
}

TEST(CheckTool, RefusesWhatCannotBeRunOrCanBeReplaced) {
  const testing::TemporaryFolder folder;
  const auto script = folder.path() / "Installomator.sh";
  EXPECT_FALSE(checkTool(script, 501));
  std::ofstream(script) << "#!/bin/sh\n";
  EXPECT_FALSE(checkTool(script, 501)) << "not executable";
  chmod(script.c_str(), 0755);
  EXPECT_TRUE(checkTool(script, 501));
  EXPECT_EQ(checkTool(script, 0).has_value(), geteuid() == 0) << "root runs only what root owns";
  chmod(script.c_str(), 0775);
  EXPECT_FALSE(checkTool(script, 0));
}

}  // namespace
}  // namespace corvane
