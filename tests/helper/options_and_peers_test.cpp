#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "base/plist.h"
#include "helper/console_preference_domains.h"
#include "helper/console_user.h"
#include "helper/helper_options.h"
#include "helper/patch_runner.h"
#include "helper/root_trust.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

Result<HelperOptions> parse(std::vector<const char*> arguments) { return HelperOptions::parse(arguments); }

TEST(HelperOptions, TakesItsRootFromTheCommandLineAndRefusesAllElse) {
  EXPECT_EQ(parse({})->root, "/");
  EXPECT_EQ(parse({})->ownWorkAfter, kFirstOwnWork);
  EXPECT_EQ(parse({"--own-work-after", "0"})->ownWorkAfter, 0s);
  const auto all = parse({"--root", "/sample/./tree", "--user", "ann", "--user-home", "/home/ann"});
  ASSERT_TRUE(all);
  EXPECT_EQ(all->root, "/sample/tree");
  EXPECT_EQ(all->user, "ann");
  EXPECT_EQ(all->userHome, "/home/ann");
  for (const auto& wrong : std::vector<std::vector<const char*>>{{"--root"},
                                                                 {"--root", ""},
                                                                 {"--root", "relative"},
                                                                 {"--root", "/a", "--root", "/b"},
                                                                 {"--own-work-after", "-1"},
                                                                 {"--installomator-source", "http://host"},
                                                                 {"--own-work-after", "5s"},
                                                                 {"--own-work-after", "86401"},
                                                                 {"--port", "1"},
                                                                 {"x"}})
    EXPECT_FALSE(parse(wrong)) << wrong.front();
}

TEST(ConsoleUser, MayAskWithRootAndTheHelperItself) {
  EXPECT_TRUE(mayAsk(0, 0, std::nullopt) && mayAsk(501, 0, 501) && mayAsk(502, 502, std::nullopt));
  EXPECT_FALSE(mayAsk(502, 0, 501) || mayAsk(502, 0, std::nullopt));
  EXPECT_EQ(activeUserOfSeat("# This is private data.\nIS_SEAT0=1\nACTIVE=c1\nACTIVE_UID=1000\n"), 1000U);
  EXPECT_FALSE(activeUserOfSeat("ACTIVE_UID=12x\n"));
  EXPECT_FALSE(activeUserOfSeat(""));
  EXPECT_EQ(activeSessionOfSeat("IS_SEAT0=1\nACTIVE=c1\nACTIVE_UID=1000\n"), "c1");
  EXPECT_FALSE(activeSessionOfSeat("ACTIVE=../../etc/passwd\n"));
  EXPECT_FALSE(activeSessionOfSeat("ACTIVE_UID=1000\n"));
  EXPECT_TRUE(isPersonsSession("UID=1000\nCLASS=user\n"));
  for (const char* other : {"CLASS=greeter\n", "CLASS=lock-screen\n", "CLASS=\n", ""})
    EXPECT_FALSE(isPersonsSession(other)) << other;
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
  std::ofstream(file) << writePlist(PlistDict{{"AppTitle", "Ours"}}, PlistFormat::xml).value();
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
    std::ofstream(file) << writePlist(PlistDict{{"AppTitle", "Theirs"}}, PlistFormat::xml).value();
    ASSERT_EQ(chown(file.c_str(), 54321, 54321), 0);
    EXPECT_TRUE(domains.user().values->empty()) << "the file of a third person";
  }
}

TEST(ConsolePreferences, ManagedOnesAreReadOnlyWhereNobodyElseCanWriteThem) {
  const testing::TemporaryFolder folder;
  const CorvaneConstants places{.root = folder.path()};
  const auto file = places.managedPreferencesPath();
  folder.write(std::filesystem::relative(file, folder.path()),
               writePlist(PlistDict{{"AppTitle", "Ours"}}, PlistFormat::xml).value());
  chmod(folder.path().c_str(), 0755);
  std::vector<std::string> told;
  const ConsolePreferenceDomains domains({.managed = file, .consoleUser = [] { return std::nullopt; }, .userFile = {}},
                                         [&](std::string_view text) { told.emplace_back(text); });
  const auto read = [&] { return !domains.managed().values->empty(); };
  EXPECT_TRUE(read());
  const auto groups = file.parent_path().parent_path();
  std::size_t states = 0;
  for (const auto& spoiled : {file, file.parent_path(), groups, folder.path()}) {
    const auto before = std::filesystem::status(spoiled).permissions();
    chmod(spoiled.c_str(), 0757);
    EXPECT_FALSE(read()) << spoiled;
    EXPECT_FALSE(read()) << spoiled;
    EXPECT_EQ(told.size(), ++states) << "told once";
    EXPECT_NE(told.back().find(spoiled.string() + " may be written to by others"), std::string::npos) << told.back();
    std::filesystem::permissions(spoiled, before);
    EXPECT_TRUE(read()) << "mended, though the file itself is as it was";
  }
  chmod(groups.c_str(), 0775);
  EXPECT_EQ(read(), geteuid() != 0) << "a group of ours may change only what runs as us";
  if (geteuid() != 0) return;
  chmod(groups.c_str(), 0755);
  ASSERT_EQ(chown(file.parent_path().c_str(), 54321, 54321), 0);
  EXPECT_FALSE(read());
}

TEST(CheckTool, RefusesWhatCannotBeRunOrCanBeReplaced) {
  const testing::TemporaryFolder folder;
  const auto script = folder.path() / "Installomator.sh";
  const auto check = [&](uid_t ownUid) { return checkTool(script, folder.path(), ownUid).has_value(); };
  const auto me = geteuid();
  EXPECT_FALSE(check(me));
  std::ofstream(script) << "#!/bin/sh\n";
  EXPECT_FALSE(check(me)) << "not executable";
  chmod(script.c_str(), 0755);
  EXPECT_TRUE(check(me));
  EXPECT_EQ(check(0), me == 0) << "root runs only what root owns";
  EXPECT_EQ(check(me + 1), me == 0) << "it belongs to a third person unless it is root's";
  chmod(script.c_str(), 0757);
  EXPECT_FALSE(check(me)) << "anybody may write to it";
  chmod(script.c_str(), 0775);
  EXPECT_FALSE(check(0)) << "a group may write to it";
  chmod(script.c_str(), 0755);
  chmod(folder.path().c_str(), 0777);
  EXPECT_FALSE(check(me)) << "anybody may exchange it";
  chmod(folder.path().c_str(), 0755);
  std::filesystem::rename(script, folder.path() / "aside.sh");
  std::filesystem::create_symlink("aside.sh", script);
  EXPECT_FALSE(check(me)) << "a link";
}

TEST(TrustedPath, LooksAtTheFolderOfEachLinkOnTheWay) {
  const testing::TemporaryFolder folder;
  const testing::TemporaryFolder elsewhere;
  const auto root = folder.path() / "root";
  folder.write("root/real/inner/tool", "");
  for (const char* name : {"named", "between"}) std::filesystem::create_directory(root / name);
  std::filesystem::create_directory_symlink("../between/hop", root / "named/tools");
  std::filesystem::create_directory_symlink(root / "real/inner", root / "between/hop");
  const auto check = [&](const std::filesystem::path& path) { return checkTrustedPath(path, root, geteuid()); };
  const auto tool = root / "named/tools/tool";
  ASSERT_TRUE(check(tool)) << check(tool).error().text;
  for (const char* spoiled : {"named", "between", "real", "real/inner", "real/inner/tool", ""}) {
    const auto place = spoiled[0] == 0 ? root : root / spoiled;
    chmod(place.c_str(), 0757);
    const auto checked = check(tool);
    ASSERT_FALSE(checked) << spoiled;
    EXPECT_EQ(checked.error().text, place.string() + " may be written to by others");
    chmod(place.c_str(), 0755);
  }
  chmod(folder.path().c_str(), 0777);
  EXPECT_TRUE(check(tool)) << "what lies above the root was given to us";
  folder.write("outer", "");
  std::filesystem::create_symlink("../../outer", root / "named/outer");
  EXPECT_FALSE(check(root / "named/outer")) << "but not for what a link finds there";
  elsewhere.write("tool", "");
  chmod(elsewhere.path().c_str(), 0777);
  std::filesystem::create_symlink(elsewhere.path() / "tool", root / "named/elsewhere");
  EXPECT_FALSE(check(root / "named/elsewhere")) << "anybody may write beside it";
  std::filesystem::create_symlink("circle", root / "named/circle");
  EXPECT_FALSE(check(root / "named/circle"));
  EXPECT_FALSE(check(root / "named/nowhere"));
  if (geteuid() != 0) return;
  ASSERT_EQ(lchown((root / "between/hop").c_str(), 54321, 54321), 0);
  EXPECT_FALSE(check(tool)) << "a link of somebody else";
}

TEST(PrepareFolders, MakesThemAndForRootTakesOnlyItsOwn) {
  const testing::TemporaryFolder folder;
  const CorvaneConstants places{.root = folder.path()};
  ASSERT_TRUE(prepareFolders(places));
  EXPECT_EQ(std::filesystem::status(places.deferralEventsFolder()).permissions(), std::filesystem::perms(01777));
  for (const auto& one : {places.supportFolder(), places.logFolder(), places.helperSocket().parent_path()}) {
    chmod(one.c_str(), 0777);
    const auto prepared = prepareFolders(places);
    EXPECT_EQ(prepared.has_value(), geteuid() != 0) << one;
    if (!prepared) {
      EXPECT_NE(prepared.error().text.find(one.string()), std::string::npos);
    }
    chmod(one.c_str(), 0755);
  }
  const auto above = places.supportFolder().parent_path();
  chmod(above.c_str(), 0777);
  EXPECT_EQ(prepareFolders(places).has_value(), geteuid() != 0) << "who may write above may exchange what is below";
  chmod(above.c_str(), 0755);
  std::filesystem::remove(places.deferralEventsFolder());
  std::filesystem::create_directory_symlink(places.logFolder(), places.deferralEventsFolder());
  EXPECT_FALSE(prepareFolders(places)) << "a link in its place";
}

}  // namespace
}  // namespace corvane
