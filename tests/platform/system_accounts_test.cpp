// People's names and folders, as the machine's own records have them.
#include "platform/posix/system_accounts.h"

#include <pwd.h>
#include <unistd.h>

#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

struct SystemAccountsTest : ::testing::Test {
  // The desktop, by the user-dirs.dirs that holds `text`.
  std::optional<std::filesystem::path> desktopNamed(const std::string& text) {
    folder_.write(".config/user-dirs.dirs", text);
    return accounts_.desktop();
  }
  std::filesystem::path make(const char* name) {
    std::filesystem::create_directories(home_ / name);
    return home_ / name;
  }

  TemporaryFolder folder_;
  std::filesystem::path home_ = folder_.path();
  SystemAccounts accounts_{"a name of no account", home_};
};

TEST_F(SystemAccountsTest, TheRunningUserIsWhomTheProgramSaysAndOthersAreLookedUp) {
  EXPECT_EQ(accounts_.userName(), "a name of no account");
  EXPECT_EQ(accounts_.homeOf("a name of no account"), home_);
  EXPECT_EQ(accounts_.isRoot(), ::geteuid() == 0);
  const auto* root = ::getpwuid(0);
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(accounts_.homeOf(root->pw_name), root->pw_dir);
  for (const auto* nobody : {"no such account", "", "root:x", "../root"})
    EXPECT_EQ(accounts_.homeOf(nobody), std::nullopt);
  const SystemAccounts elsewhere(root->pw_name, home_);
  EXPECT_EQ(elsewhere.homeOf(root->pw_name), home_) << "the environment's home goes before the account's";
}

TEST_F(SystemAccountsTest, TheDesktopIsTheFolderThatIsNamedAndThere) {
  EXPECT_EQ(accounts_.desktop(), std::nullopt);
  folder_.write("Desktop", "a file");
  EXPECT_EQ(accounts_.desktop(), std::nullopt);
  std::filesystem::remove(home_ / "Desktop");
  const auto usual = make("Desktop");
  EXPECT_EQ(accounts_.desktop(), usual);

  const auto own = make("Schreibtisch");
  const auto quoted = make("My \"Desk\"");
  const auto absolute = folder_.path().string() + "/Schreibtisch";
  const std::pair<std::string, std::filesystem::path> rows[] = {
      {"XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n", own},
      {"# XDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_DOWNLOAD_DIR=\"$HOME/Desktop\"\nXDG_DESKTOP_DIR=\"" + absolute + "\"",
       own},
      {"XDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n", own},
      {"  XDG_DESKTOP_DIR=\"$HOME/Schreibtisch/\"\n", own},
      {"XDG_DESKTOP_DIR=\"$HOME//Schreibtisch\"\n", own},
      {"XDG_DESKTOP_DIR=\"$HOME/My \\\"Desk\\\"\"\n", quoted},
      {"XDG_DESKTOP_DIR=\"$HOME/\"\n", home_},
      {"XDG_DESKTOP_DIR=\"relative\"\n", usual},
      {"XDG_DESKTOP_DIR=$HOME/Schreibtisch\n", usual},
      {"XDG_DESKTOP_DIR=\"", usual},
      {std::string("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n").append(70'000, '#'), usual}};
  for (const auto& [text, desktop] : rows)
    EXPECT_EQ(desktopNamed(text).value_or("").lexically_normal() / "", desktop / "") << text.substr(0, 60);
  EXPECT_EQ(desktopNamed("XDG_DESKTOP_DIR=\"$HOME/gone\"\n"), std::nullopt);
}

}  // namespace corvane::testing
