#include <unistd.h>
#include <utmpx.h>

#include <atomic>
#include <cstring>
#include <mutex>

#include "platform/dbus/login_console_sessions.h"
#include "platform/linux/utmp_console_sessions.h"
#include "platform/scripted/scripted_surroundings.h"
#include "support/bus_test.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.freedesktop.login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr Date kMorning = Date(1'790'000'000s) + 250ms;

struct Login {
  std::string name = "anna";
  std::string kind = "user";
  std::string seat = "seat0";
  bool remote = false;
  Date since = kMorning;
};

class LoginManager {
 public:
  explicit LoginManager(const PrivateBus& bus)
      : service_(bus, kName), manager_(service_.at("/org/freedesktop/login1")) {
    manager_.registerMethod("ListSessions").onInterface(kManager).implementedAs([this] {
      using Listed = sdbus::Struct<std::string, std::uint32_t, std::string, std::string, sdbus::ObjectPath>;
      if (refuses) throw sdbus::Error("org.freedesktop.DBus.Error.AccessDenied", "not for you");
      std::vector<Listed> list;
      const std::scoped_lock lock(mutex_);
      for (const auto& identifier : listed_)
        list.emplace_back(identifier, 1000U, "listed", "seat0", sdbus::ObjectPath(pathOf(identifier)));
      return list;
    });
    manager_.registerSignal("SessionNew").onInterface(kManager).withParameters<std::string, sdbus::ObjectPath>();
    manager_.registerSignal("SessionRemoved").onInterface(kManager).withParameters<std::string, sdbus::ObjectPath>();
  }

  std::atomic<bool> refuses = false;

  void answer() {
    service_.answer();
    answers_ = true;
  }
  void begins(const std::string& identifier, const Login& login) {
    {
      const std::scoped_lock lock(mutex_);
      listed_.push_back(identifier);
    }
    auto& object = service_.at(pathOf(identifier));
    object.registerProperty("Name").onInterface(kSession).withGetter([=] { return login.name; });
    object.registerProperty("Class").onInterface(kSession).withGetter([=] { return login.kind; });
    object.registerProperty("Remote").onInterface(kSession).withGetter([=] { return login.remote; });
    object.registerProperty("Seat").onInterface(kSession).withGetter([=] {
      return sdbus::Struct<std::string, sdbus::ObjectPath>(login.seat, "/org/freedesktop/login1/seat/seat0");
    });
    object.registerProperty("Timestamp").onInterface(kSession).withGetter([=] {
      return static_cast<std::uint64_t>(login.since.time_since_epoch().count());
    });
    if (!answers_) return;
    object.finishRegistration();
    tell("SessionNew", identifier);
  }
  void ends(const std::string& identifier) { tell("SessionRemoved", identifier); }

 private:
  static std::string pathOf(const std::string& identifier) { return "/org/freedesktop/login1/session/_" + identifier; }
  void tell(const char* what, const std::string& identifier) {
    auto signal = manager_.createSignal(kManager, what);
    signal << identifier << sdbus::ObjectPath(pathOf(identifier));
    manager_.emitSignal(signal);
  }

  std::mutex mutex_;
  std::vector<std::string> listed_;
  BusService service_;
  sdbus::IObject& manager_;
  bool answers_ = false;
};

std::string record(short type, const char* line, const char* user, const char* host, pid_t process, int since) {
  utmpx entry{};
  entry.ut_type = type;
  entry.ut_pid = process;
  std::strncpy(entry.ut_line, line, sizeof entry.ut_line);
  std::strncpy(entry.ut_user, user, sizeof entry.ut_user);
  std::strncpy(entry.ut_host, host, sizeof entry.ut_host);
  entry.ut_tv.tv_sec = since;
  return {reinterpret_cast<const char*>(&entry), sizeof entry};
}

}  // namespace

struct LoginConsoleSessionsTest : BusLinkedTest {
  bool become(const ConsoleSessions& sessions, std::vector<std::string> users) {
    return wait([&] {
      const auto now = sessions.sessions();
      if (!now) return false;
      std::vector<std::string> names;
      for (const auto& session : *now) names.push_back(session.user);
      std::ranges::sort(names);
      return names == users;
    });
  }

  ScriptedConsoleSessions list_;
};

TEST_F(LoginConsoleSessionsTest, OnlySessionsOfPeopleAtTheScreenCount) {
  LoginManager manager(bus_);
  manager.begins("1", {});
  manager.begins("2", {.name = "berta", .remote = true});
  manager.begins("3", {.name = "gdm", .kind = "greeter"});
  manager.begins("4", {.name = "carl", .seat = ""});
  manager.begins("5", {.name = "dora", .since = Date()});
  manager.answer();
  list_.known.emplace();
  const LoginConsoleSessions sessions(link_, list_);
  EXPECT_EQ(sessions.sessions(), std::nullopt) << "not told yet, whatever the list says";
  ASSERT_TRUE(become(sessions, {"anna", "dora"}));
  EXPECT_THAT(sessions.sessions(), Optional(UnorderedElementsAre(ConsoleSession{.user = "anna", .loggedInAt = kMorning},
                                                                 ConsoleSession{.user = "dora"})));
}

TEST_F(LoginConsoleSessionsTest, ComingAndGoingIsHeard) {
  auto manager = std::make_unique<LoginManager>(bus_);
  manager->answer();
  const LoginConsoleSessions sessions(link_, list_);
  ASSERT_TRUE(become(sessions, {}));
  manager->begins("1", {});
  manager->begins("2", {.name = "berta"});
  EXPECT_TRUE(become(sessions, {"anna", "berta"}));
  manager->ends("1");
  EXPECT_TRUE(become(sessions, {"berta"}));

  list_.known = std::vector{ConsoleSession{.user = "listed"}};
  manager.reset();
  EXPECT_TRUE(become(sessions, {"listed"})) << "the manager has gone";
  manager = std::make_unique<LoginManager>(bus_);
  manager->begins("7", {.name = "carl"});
  manager->answer();
  EXPECT_TRUE(become(sessions, {"carl"}));
  manager.reset();
  bus_.end();
  EXPECT_TRUE(become(sessions, {"listed"})) << "without a bus";
  list_.known.reset();
  EXPECT_EQ(sessions.sessions(), std::nullopt);
}

TEST_F(LoginConsoleSessionsTest, WithoutTheManagersListTheOtherSourceTells) {
  LoginManager manager(bus_);
  manager.refuses = true;
  manager.answer();
  const LoginConsoleSessions refused(link_, list_);
  list_.known = std::vector{ConsoleSession{.user = "listed"}};
  EXPECT_TRUE(become(refused, {"listed"}));
}

TEST(UtmpConsoleSessionsTest, LivingLoginsAtTheOwnScreenCount) {
  const TemporaryFolder folder;
  const auto own = ::getpid();
  const pid_t nobody = 1 << 30;  // over the kernel's largest number
  const auto list = folder.write(
      "utmp", record(BOOT_TIME, "~", "reboot", "6.1", 0, 1) + record(LOGIN_PROCESS, "tty3", "LOGIN", "", own, 1) +
                  record(USER_PROCESS, "tty2", "anna", "", own, 1'790'000'000) +
                  record(USER_PROCESS, ":0", "berta", ":0", own, 1'790'000'060) +
                  record(USER_PROCESS, "pts/0", "anna", ":0", own, 1) +
                  record(USER_PROCESS, "pts/1", "carl", "192.0.2.7", own, 1) +
                  record(USER_PROCESS, ":1", "carl", "thin.example.org", own, 1) +
                  record(USER_PROCESS, "tty4", "dead", "", nobody, 1) +
                  record(DEAD_PROCESS, "tty5", "dead", "", own, 1) +
                  record(USER_PROCESS, "tty6", "a-name-that-fills-the-whole-field", "", own, 1) + "torn");
  EXPECT_THAT(UtmpConsoleSessions(list).sessions(),
              Optional(UnorderedElementsAre(
                  ConsoleSession{.user = "anna", .loggedInAt = Date(1'790'000'000s)},
                  ConsoleSession{.user = "berta", .loggedInAt = Date(1'790'000'060s)},
                  ConsoleSession{.user = std::string("a-name-that-fills-the-whole-field").substr(0, 32),
                                 .loggedInAt = Date(1s)})));
  EXPECT_EQ(UtmpConsoleSessions(folder.path() / "absent").sessions(), std::nullopt);
  EXPECT_THAT(UtmpConsoleSessions(folder.write("empty", "")).sessions(), Optional(IsEmpty()));
}

}  // namespace corvane::testing
