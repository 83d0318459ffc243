#include "platform/dbus/session_focus_state.h"

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>

#include "platform/dbus/bus_connection.h"
#include "support/bus_test.h"
#include "support/environment_variable.h"
#include "support/started_program.h"
#include "support/temporary_folder.h"
#include "support/unix_socket.h"

namespace corvane::testing {

namespace {

constexpr const char* kNotifications = "org.freedesktop.Notifications";
constexpr const char* kLogin = "org.freedesktop.login1";
constexpr const char* kLoginManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.gnome.SessionManager";
constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kXfconf = "org.xfce.Xfconf";

// For what is answered in time: a busy machine may take what it takes.
constexpr BusPatience kAmple{.call = std::chrono::seconds(20), .answer = std::chrono::seconds(20)};
constexpr BusPatience kShort{.call = std::chrono::milliseconds(40), .answer = std::chrono::milliseconds(80)};
// Far over what kShort allows, far under what the library waits by itself, which is 25 s and more.
constexpr auto kFarTooLong = std::chrono::seconds(10);

using Inhibitor = sdbus::Struct<std::string, std::string, std::string, std::string, std::uint32_t, std::uint32_t>;

bool endsInTime(const std::function<void()>& question) {
  const auto start = std::chrono::steady_clock::now();
  question();
  return std::chrono::steady_clock::now() - start < kFarTooLong;
}

class DeafListener {
 public:
  explicit DeafListener(const std::filesystem::path& path) : descriptor_(unixSocket(path, ::bind)) {}
  ~DeafListener() { ::close(descriptor_); }
  DeafListener(const DeafListener&) = delete;
  DeafListener& operator=(const DeafListener&) = delete;

  [[nodiscard]] bool listens() const { return ::listen(descriptor_, 8) == 0; }

 private:
  int descriptor_;
};

}  // namespace

struct SessionFocusStateTest : BusTest {
  [[nodiscard]] SessionFocusState state(BusPatience patience = kAmple) const {
    return SessionFocusState({.session = session_.address(), .system = system_.address()}, patience);
  }

  template <class Define>
  static std::unique_ptr<BusService> serves(PrivateBus& bus, const char* name, const char* path, Define define) {
    auto made = std::make_unique<BusService>(bus, name);
    define(made->at(path));
    made->answer();
    return made;
  }
  template <class Getter>
  std::unique_ptr<BusService> inhibited(Getter getter) {
    return serves(session_, kNotifications, "/org/freedesktop/Notifications", [&](auto& object) {
      object.registerProperty("Inhibited").onInterface(kNotifications).withGetter(std::move(getter));
    });
  }
  template <class Answer>
  std::unique_ptr<BusService> loginManager(Answer answer) {
    return serves(system_, kLogin, "/org/freedesktop/login1", [&](auto& object) {
      object.registerMethod("ListInhibitors").onInterface(kLoginManager).implementedAs(std::move(answer));
    });
  }

  PrivateBus& session_ = bus_;
  PrivateBus system_;
};

TEST_F(SessionFocusStateTest, TheNotificationServiceSaysWhetherItIsInhibited) {
  const auto state = this->state();
  EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "no service yet";
  {
    std::atomic<bool> inhibits = true;
    const auto service = inhibited([&] { return inhibits.load(); });
    EXPECT_THAT(state.doNotDisturb(), Optional(true));
    inhibits = false;
    EXPECT_THAT(state.doNotDisturb(), Optional(false));
  }
  EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "the service has gone";

  const auto service = inhibited([] { return std::string("true"); });
  EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "a text is no answer";
}

// A service that does not say so itself, beside the settings of every desktop, each of which says "disturb not".
TEST_F(SessionFocusStateTest, TheSettingCountsOfTheDesktopWhoseServiceRuns) {
  const auto state = this->state();
  std::atomic<bool> quiet = true;
  std::atomic<bool> tells = false;
  const auto service = [&](const std::string& name) {
    return serves(session_, kNotifications, "/org/freedesktop/Notifications", [&](auto& object) {
      object.registerMethod("GetServerInformation").onInterface(kNotifications).implementedAs([name] {
        return std::make_tuple(name, std::string("Vendor"), std::string("1"), std::string("1.2"));
      });
      if (name == "dunst")
        object.registerProperty("paused").onInterface("org.dunstproject.cmd0").withGetter([&] { return quiet.load(); });
    });
  };
  {
    const auto shell = service("gnome-shell");
    EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "nobody shows the settings";
  }
  BusService portal(session_, kPortal);
  portal.at("/org/freedesktop/portal/desktop")
      .registerMethod("org.freedesktop.portal.Settings", "Read", "ss", "v", [&](sdbus::MethodCall call) {
        std::string space;
        std::string key;
        call >> space >> key;
        if (!tells) return call.createReply().send();
        if (space != "org.gnome.desktop.notifications" || key != "show-banners")
          return call.createErrorReply(sdbus::Error("org.freedesktop.portal.Error.NotFound", "no such setting")).send();
        auto reply = call.createReply();
        reply.openVariant("v");
        reply << sdbus::Variant(!quiet);
        reply.closeVariant();
        reply.send();
      });
  portal.answer();
  BusService xfconf(session_, kXfconf);
  xfconf.at("/org/xfce/Xfconf")
      .registerMethod("GetProperty")
      .onInterface(kXfconf)
      .implementedAs([&](const std::string& channel, const std::string& property) {
        if (channel != "xfce4-notifyd" || property != "/do-not-disturb")
          throw sdbus::Error("org.xfce.Xfconf.Error.PropertyNotFound", "no such setting");
        return sdbus::Variant(quiet.load());
      });
  xfconf.answer();

  {
    const auto shell = service("gnome-shell");
    EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "an answer without a value";
    tells = true;
  }
  for (const auto* name : {"gnome-shell", "Xfce Notify Daemon", "dunst"}) {
    const auto running = service(name);
    quiet = true;
    EXPECT_THAT(state.doNotDisturb(), Optional(true)) << name;
    quiet = false;
    EXPECT_THAT(state.doNotDisturb(), Optional(false)) << name;
  }
  quiet = true;
  const auto other = service("some other service");
  EXPECT_EQ(state.doNotDisturb(), std::nullopt) << "it obeys none of these settings";
}

TEST_F(SessionFocusStateTest, IdleInhibitorsOfThisUserAreNamedByTheirProcess) {
  StartedProgram player({"/bin/sleep", "1000"}, {});
  ASSERT_GT(player.pid(), 0);
  // The kernel lets the starter go on a moment before it has put the new program's arguments in place.
  const auto arguments = "/proc/" + std::to_string(player.pid()) + "/cmdline";
  ASSERT_TRUE(endsInTime([&] {
    while (TemporaryFolder::read(arguments).empty() && ::kill(player.pid(), 0) == 0) continue;
  }));
  const auto own = ::getuid();
  const auto pid = static_cast<std::uint32_t>(player.pid());
  const std::uint32_t nobody = 1U << 30U;  // over the kernel's largest number
  std::vector<Inhibitor> inhibitors{
      {"sleep:idle", "Player", "film", "block", own, pid},
      {"idle", "Slides", "talk", "block", own, nobody},
      {"idle", "Other user", "film", "block", own + 1, pid},
      {"idle", "Delays", "film", "delay", own, nobody},
      {"sleep:handle-lid-switch", "Idles not", "backup", "block", own, nobody},
      {"idleness", "Likewise", "backup", "block", own, nobody},
  };
  const auto login = loginManager([&] { return inhibitors; });
  const auto state = this->state();
  EXPECT_THAT(state.displaySleepHolders(), Optional(ElementsAre("Slides", "sleep")));
  player.end();
  EXPECT_THAT(state.displaySleepHolders(), Optional(ElementsAre("Player", "Slides")));
}

TEST_F(SessionFocusStateTest, TheSessionManagersIdleInhibitorsJoinThem) {
  const auto own = ::getuid();
  const auto login = loginManager([own] {
    return std::vector<Inhibitor>{{"idle", "video", "", "block", own, 1U << 30U}};
  });
  BusService manager(session_, kSession);
  std::vector<sdbus::ObjectPath> paths;
  const auto add = [&](const std::string& path, std::uint32_t flags, const std::string& application) {
    auto& object = manager.at(path);
    object.registerMethod("GetFlags").onInterface("org.gnome.SessionManager.Inhibitor").implementedAs([flags] {
      return flags;
    });
    object.registerMethod("GetAppId").onInterface("org.gnome.SessionManager.Inhibitor").implementedAs([application] {
      return application;
    });
    paths.emplace_back(path);
  };
  add("/org/gnome/SessionManager/Inhibitor1", 8, "video");
  add("/org/gnome/SessionManager/Inhibitor2", 4 | 8, "org.example.Slides");
  add("/org/gnome/SessionManager/Inhibitor3", 1 | 2 | 4, "org.example.Backup");
  add("/org/gnome/SessionManager/Inhibitor4", 8, "");
  paths.emplace_back("/org/gnome/SessionManager/GoneMeanwhile");
  manager.at("/org/gnome/SessionManager").registerMethod("GetInhibitors").onInterface(kSession).implementedAs([&] {
    return paths;
  });
  manager.answer();
  EXPECT_THAT(state().displaySleepHolders(), Optional(ElementsAre("Inhibitor4", "org.example.Slides", "video")));
}

TEST_F(SessionFocusStateTest, WhereThereIsNothingToAskNothingIsHeld) {
  EXPECT_THAT(state().displaySleepHolders(), Optional(IsEmpty())) << "buses without services";

  const auto socket = session_.folder().path() / "nobody listens";
  { const DeafListener left(socket); }
  std::vector<std::optional<std::string>> addresses{
      std::nullopt, "", "disabled:", "autolaunch:", "unix:path=%2", "unix:path=%zz", "unix:tmpdir=/tmp"};
  for (const auto& path : {std::string("/nowhere/bus"), std::string(200, 'x'), socket.string()})
    addresses.emplace_back("unix:path=" + path);
  addresses.emplace_back("tcp:host=127.0.0.1,port=1");
  for (const auto& address : addresses) {
    const SessionFocusState lonely({.session = address, .system = address}, kAmple);
    EXPECT_EQ(lonely.doNotDisturb(), std::nullopt) << address.value_or("none");
    EXPECT_THAT(lonely.displaySleepHolders(), Optional(IsEmpty())) << address.value_or("none");
  }
}

TEST_F(SessionFocusStateTest, AddressesAreReadAsTheBusWritesThem) {
  const auto service = inhibited([] { return true; });
  auto escaped = session_.address();
  escaped.replace(escaped.find("corvane"), 1, "%63");
  for (const auto& address :
       {session_.printedAddress(), escaped,
        "disabled:;unix:path=/nowhere/bus;unix:abstract=/nowhere/bus;" + session_.address() + ";unix:path=/after"}) {
    const SessionFocusState state({.session = address, .system = std::nullopt}, kAmple);
    EXPECT_THAT(state.doNotDisturb(), Optional(true)) << address;
  }
}

TEST_F(SessionFocusStateTest, NoServiceIsStartedByAsking) {
  const auto mark = session_.folder().path() / "started";
  for (const auto* bus : {&session_, &system_})
    for (const auto* name : {kNotifications, kPortal, kXfconf, kSession, kLogin})
      bus->makeStartable(name, "/usr/bin/touch " + mark.string());
  for (auto* bus : {&session_, &system_}) {
    bus->end();
    bus->start();
  }
  EXPECT_EQ(state().doNotDisturb(), std::nullopt);
  EXPECT_THAT(state().displaySleepHolders(), Optional(IsEmpty()));
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(SessionFocusStateTest, WhatDoesNotAnswerIsUnreadableInTime) {
  const auto unreadable = [&](const SessionFocusState& state) {
    return endsInTime([&] {
      EXPECT_EQ(state.doNotDisturb(), std::nullopt);
      EXPECT_EQ(state.displaySleepHolders(), std::nullopt);
    });
  };
  {
    const BusService notifications(session_, kNotifications);
    const BusService manager(session_, kSession);
    EXPECT_TRUE(unreadable(state(kShort))) << "a service on the session bus";
    EXPECT_TRUE(unreadable(state({.call = std::chrono::hours(1), .answer = kShort.answer}))) << "the bound of it all";
  }
  {
    const BusService login(system_, kLogin);
    EXPECT_TRUE(unreadable(state(kShort))) << "the login manager";
  }
  {
    const auto socket = session_.folder().path() / "deaf";
    const DeafListener deaf(socket);
    ASSERT_TRUE(deaf.listens());
    const auto address = "unix:path=" + socket.string();
    EXPECT_TRUE(unreadable(SessionFocusState({.session = address, .system = std::nullopt}, kShort))) << "a new bus";
  }
  const auto state = this->state({.call = std::chrono::milliseconds(40), .answer = kAmple.answer});
  // A busy machine may miss the short limit now and then.
  EXPECT_TRUE(endsInTime([&] {
    while (state.displaySleepHolders() == std::nullopt) continue;
  }));
  session_.hang();
  EXPECT_TRUE(unreadable(state)) << "a bus that hangs after it had answered";
  EXPECT_TRUE(unreadable(state)) << "and is asked anew";
  session_.goOn();
}

TEST_F(SessionFocusStateTest, AnswersNotAgreedAreUnreadable) {
  const auto state = this->state();
  const auto holders = [&](auto answer) {
    const auto login = loginManager(std::move(answer));
    return state.displaySleepHolders();
  };
  EXPECT_EQ(holders([] { return std::vector<std::string>{"idle"}; }), std::nullopt) << "a list of texts";
  EXPECT_EQ(holders([] {}), std::nullopt) << "no value at all";
  EXPECT_EQ(holders([]() -> std::vector<Inhibitor> {
              throw sdbus::Error("org.freedesktop.DBus.Error.AccessDenied", "not for you");
            }),
            std::nullopt)
      << "a refusal";
  {
    BusService silent(system_, kLogin);
    silent.at("/org/freedesktop/login1");
    silent.answer();
    EXPECT_TRUE(state.displaySleepHolders()) << "no such operation";
  }

  BusService manager(session_, kSession);
  manager.at("/org/gnome/SessionManager").registerMethod("GetInhibitors").onInterface(kSession).implementedAs([] {
    return std::vector<sdbus::ObjectPath>{"/one"};
  });
  manager.at("/one").registerMethod("GetFlags").onInterface("org.gnome.SessionManager.Inhibitor").implementedAs([] {
    return std::string("idle");
  });
  manager.answer();
  EXPECT_EQ(state.displaySleepHolders(), std::nullopt) << "flags that are a text";
}

TEST_F(SessionFocusStateTest, ABusThatWentIsFoundAgain) {
  const auto state = this->state();
  const auto service = [&] { return inhibited([] { return true; }); };
  auto running = service();
  EXPECT_THAT(state.doNotDisturb(), Optional(true));
  running.reset();
  session_.end();
  system_.end();
  EXPECT_EQ(state.doNotDisturb(), std::nullopt);
  EXPECT_THAT(state.displaySleepHolders(), Optional(IsEmpty()));
  session_.start();
  running = service();
  EXPECT_THAT(state.doNotDisturb(), Optional(true));
}

TEST(BusAddressesTest, TheEnvironmentNamesTheBuses) {
  const EnvironmentVariable session("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  EnvironmentVariable system("DBUS_SYSTEM_BUS_ADDRESS", std::nullopt);
  EXPECT_EQ(BusAddresses::ofEnvironment().session, std::nullopt);
  EXPECT_EQ(BusAddresses::ofEnvironment().system, "unix:path=/run/dbus/system_bus_socket");
  system.set("unix:path=/elsewhere");
  EXPECT_EQ(BusAddresses::ofEnvironment().system, "unix:path=/elsewhere");
}

}  // namespace corvane::testing
