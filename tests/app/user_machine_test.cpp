// The real machine under a user's program: where it works, and that its services stand on it without touching it.
#include "programs/user/user_machine.h"
#include "programs/user/user_places.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "programs/user/helper_keeper.h"
#include "support/environment_variable.h"
#include "support/service_manager.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "workflow/status_view_model.h"

namespace corvane {
namespace {

TEST(PlacesFromEnvironment, NoRootOrTheWholeMachineIsTheMachine) {
  const testing::EnvironmentVariable home("HOME", "/Users/ada");
  for (const auto& value :
       {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("/")}) {
    const testing::EnvironmentVariable root("CORVANE_ROOT", value);
    const auto places = placesFromEnvironment();
    ASSERT_TRUE(places);
    EXPECT_EQ(places->root, "/");
    EXPECT_EQ(places->home, "/Users/ada");
  }
}

TEST(PlacesFromEnvironment, AnOwnFolderIsHonouredByItsCanonicalPath) {
  const testing::TemporaryFolder folder;
  std::filesystem::create_directories(folder.path() / "mac");
  std::filesystem::create_symlink("mac", folder.path() / "link");
  const testing::EnvironmentVariable root("CORVANE_ROOT", (folder.path() / "link").string());
  const auto places = placesFromEnvironment();
  ASSERT_TRUE(places) << places.error().text;
  EXPECT_EQ(places->root, folder.path() / "mac");
}

TEST(PlacesFromEnvironment, AnyOtherRootIsRefusedWithTheReason) {
  const testing::TemporaryFolder folder;
  const auto made = [&](const char* name, mode_t mode) {
    const auto path = folder.path() / name;
    std::filesystem::create_directories(path);
    chmod(path.c_str(), mode);
    return path.string();
  };
  const auto foreign = [&]() -> std::string {
    if (geteuid() != 0) return "/usr";
    const auto path = made("foreign", 0755);
    return chown(path.c_str(), 1, 1) == 0 ? path : "/";
  }();
  const struct {
    std::string root;
    std::string reason;
    int code;
  } rows[] = {
      {"build/sample", "CORVANE_ROOT must be an absolute path; it is \"build/sample\".", 1},
      {foreign, "CORVANE_ROOT: " + foreign + " does not belong to the user who runs this program", EPERM},
      {made("group", 0775), "may be written to by others; take that right away", EPERM},
      {made("world", 0757), "may be written to by others; take that right away", EPERM},
      {made("all", 0777), "may be written to by others; take that right away", EPERM},
      {made("sticky", 01777), "may be written to by others; take that right away", EPERM},
      {folder.write("file", ""), "is not a folder", ENOTDIR},
      {folder.path() / "gone", "cannot be looked at: No such file or directory", ENOENT},
  };
  for (const auto& row : rows) {
    const testing::EnvironmentVariable root("CORVANE_ROOT", row.root);
    const auto places = placesFromEnvironment();
    ASSERT_FALSE(places) << row.root;
    EXPECT_EQ(places.error().code, row.code) << row.root;
    EXPECT_NE(places.error().text.find(row.reason), std::string::npos) << places.error().text;
    EXPECT_TRUE(places.error().text.starts_with("CORVANE_ROOT")) << places.error().text;
  }
}

TEST(HelperKeeper, AnInstalledHelperIsTheServiceManagersAndAnyOtherTheUsersOwn) {
  const struct {
    std::filesystem::path root;
    Heard<UnitFile> unit;
    HelperKeeper keeper;
  } rows[] = {
      {"/", UnitFile::enabled, HelperKeeper::serviceManager},
      {"/", UnitFile::disabled, HelperKeeper::serviceManager},
      {"/", UnitFile::masked, HelperKeeper::serviceManager},
      {"/", std::unexpected(Silence::unreadable), HelperKeeper::serviceManager},
      {"/", UnitFile::absent, HelperKeeper::ownChild},
      {"/", std::unexpected(Silence::nobody), HelperKeeper::ownChild},
      {"/tmp/mac", UnitFile::enabled, HelperKeeper::ownChild},
  };
  for (const auto& row : rows) {
    bool asked = false;
    const auto ask = [&] {
      asked = true;
      return row.unit;
    };
    EXPECT_EQ(helperKeeper(row.root, ask), row.keeper) << &row - rows;
    EXPECT_EQ(asked, row.root == "/");
  }
}

TEST(HelperKeeper, TheMachinesOwnRootAndItsBusDecide) {
  if (!testing::isInstalled(testing::PrivateBus::kDaemon)) GTEST_SKIP() << "needs dbus-daemon";
  const testing::TemporaryFolder folder;
  const testing::PrivateBus bus;
  const testing::EnvironmentVariable address("DBUS_SYSTEM_BUS_ADDRESS", bus.address());
  const auto status = [&](const std::filesystem::path& root) {
    UserMachine machine({.root = root, .home = folder.path()},
                        std::filesystem::path(CORVANE_BUNDLE) / "Contents/MacOS/Corvane");
    return machine.registration->status();
  };
  const auto own = status("/");
  const testing::ServiceManager manager(bus, {.file = "enabled"});
  EXPECT_EQ(status("/"), HelperStatus::enabled);
  EXPECT_EQ(status(folder.path()), own) << "a daemon of the user, as without a manager";
  EXPECT_NE(own, HelperStatus::enabled);
  EXPECT_EQ(manager.count("GetUnitFileState"), 1);
}

TEST(Services, StandOnAnEmptyMachineAndLeaveItAsItWas) {
  const testing::TemporaryFolder folder;
  {
    UserMachine machine({.root = folder.path(), .home = folder.path() / "Users/ada"});
    AskedFor focus;
    Services services(machine.ports(focus));
    StatusViewModel model(services.workflow());
    EXPECT_TRUE(model.fields().inventory.apps.empty());
    EXPECT_TRUE(model.isIdle());
    EXPECT_FALSE(services.installation.isOperational());
    EXPECT_TRUE(services.receipts.readAllReceipts().empty());
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace corvane
