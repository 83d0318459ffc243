// The real notifier, on a bus with a notification service, as the router starts it.
#include "notifications/persistent_notification_request.h"
#include "platform/uv/uv_child_processes.h"
#include "support/bus_test.h"
#include "support/notification_server.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using Request = PersistentNotificationRequest;
using Operation = Request::Operation;

constexpr const char* kInBundle =
    "Corvane.app/Contents/Helpers/Corvane Notification.app/Contents/MacOS/Corvane Notification";

struct NotifierProcessTest : BusTest {
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    std::filesystem::create_directories((folder_.path() / kInBundle).parent_path());
    std::filesystem::copy_file(CORVANE_NOTIFIER_PROGRAM, folder_.path() / kInBundle);
    folder_.writeExecutable("Corvane.app/Contents/MacOS/Corvane",
                            "#!/bin/sh\necho \"$#:$*:$DISPLAY\" >>\"" + opened().string() + "\"\n");
  }
  void TearDown() override {
    if (!bus_.works()) return;
    run({.operation = Operation::clearAll});
    EXPECT_TRUE(wait([this] { return running_ == 0; })) << "nothing is left that could keep one running";
  }

  [[nodiscard]] std::filesystem::path opened() const { return folder_.path() / "opened"; }
  using Environment = std::vector<std::pair<std::string, std::string>>;
  [[nodiscard]] Environment places() const {
    return {{"CORVANE_ROOT", folder_.path().string()}, {"HOME", (folder_.path() / "home").string()}};
  }
  [[nodiscard]] Environment environment() const {
    auto all = places();
    all.insert(all.end(), {{"DBUS_SESSION_BUS_ADDRESS", bus_.address()},
                           {"XDG_RUNTIME_DIR", folder_.path().string()},
                           {"DISPLAY", ":7"}});
    return all;
  }

  using Exit = std::shared_ptr<std::optional<ChildExit>>;  // absent while it runs
  struct Started {
    std::shared_ptr<ChildHandle> child;
    Exit exit = std::make_shared<std::optional<ChildExit>>();
  };
  Started start(std::vector<std::string> arguments) {
    ++running_;
    Started started;
    started.child = children_.start({.executable = folder_.path() / kInBundle,
                                     .arguments = std::move(arguments),
                                     .environment = environment_.empty() ? environment() : environment_},
                                    {}, [this, exit = started.exit](Result<ChildExit> ended) {
                                      --running_;
                                      *exit = std::move(ended).value_or(ChildExit{.code = -1});
                                    });
    return started;
  }
  Started ask(const Request& request) { return start({"--request", request.encoded()}); }
  ChildExit runWith(std::vector<std::string> arguments) {
    const auto exit = start(std::move(arguments)).exit;
    EXPECT_TRUE(wait([&] { return exit->has_value(); }));
    return exit->value_or(ChildExit{.code = -2});
  }
  ChildExit run(const Request& request) { return runWith({"--request", request.encoded()}); }
  [[nodiscard]] static Request note(const std::string& name, std::optional<Date> fireDate = std::nullopt) {
    return {.identifier = name,
            .title = name,
            .sound = true,
            .categoryIdentifier = "crv.updatesAvailable.category",
            .userInfo = {{"intent", "showDeferralPrompt"}},
            .fireDate = fireDate,
            .displayHeader = "Acme Updates",
            .openActionTitle = "Open Acme Updates"};
  }
  bool shows(const NotificationServer& server, const std::vector<std::string>& titles) {
    return wait([&] { return server.titles() == titles; });
  }
  bool ended(int left = 0) {
    return wait([&, left] { return running_ == left; });
  }

  TemporaryFolder folder_;
  UvChildProcesses children_{loop_.loop(), loop_.mainQueue()};
  Environment environment_;
  int running_ = 0;
};

TEST_F(NotifierProcessTest, wrongArgumentsShowNothing) {
  const NotificationServer server(bus_);
  const auto usage = runWith({"--help"});
  EXPECT_EQ(usage.code, 2);
  EXPECT_EQ(usage.errors, "usage: \"Corvane Notification\" --request <base64>\n");
  for (const auto* text : {"", "e30="}) {
    const auto exit = runWith({"--request", text});
    EXPECT_EQ(exit.code, 1) << text;
    EXPECT_THAT(exit.errors, HasSubstr("Corvane Notification: ")) << text;
  }
  EXPECT_THAT(server.titles(), IsEmpty());
}

TEST_F(NotifierProcessTest, withoutASessionOrAServiceItSaysSo) {
  const auto mute = run(note("a"));
  EXPECT_EQ(mute.code, 1);
  EXPECT_EQ(mute.errors, "Corvane Notification: No notification service runs in this desktop session.\n");
  EXPECT_EQ(run({.operation = Operation::clearAll}).code, 0) << "there is nothing to take away";

  environment_ = places();
  const auto alone = run(note("a"));
  EXPECT_EQ(alone.code, 1);
  EXPECT_EQ(alone.errors, "Corvane Notification: There is no session bus.\n");
  environment_.clear();
  const auto log = TemporaryFolder::read(folder_.path() / "home/Library/Logs/Corvane/crv.log");
  EXPECT_THAT(log, HasSubstr("[ERROR] CorvaneNotification: No notification service runs in this desktop session."));
  EXPECT_THAT(log, HasSubstr("[ERROR] CorvaneNotification: There is no session bus."));
}

TEST_F(NotifierProcessTest, oneProcessStandsForAllThatIsShown) {
  NotificationServer server(bus_);
  ask(note("first"));
  ASSERT_TRUE(shows(server, {"first"}));
  const auto first = server.shown().front();
  EXPECT_EQ(first.application, "Acme Updates");
  EXPECT_THAT(first.actions,
              ElementsAre("default", "Open Acme Updates", "crv.openDeferralPrompt", "Open Acme Updates"));
  EXPECT_EQ(first.timeout, 0);
  EXPECT_EQ(run(note("second")).code, 0) << "handed over";
  EXPECT_EQ(run(note("waiting", dateFromSecondsSince1970(4e9))).code, 0);
  ASSERT_TRUE(shows(server, {"first", "second"}));
  EXPECT_EQ(run({.operation = Operation::cancel, .identifiers = {"first", "never"}}).code, 0);
  ASSERT_TRUE(shows(server, {"second"}));
  EXPECT_EQ(run({.operation = Operation::clearDelivered}).code, 0);
  ASSERT_TRUE(shows(server, {}));
  EXPECT_EQ(running_, 1) << "for the one that waits";
  EXPECT_EQ(run({.operation = Operation::clearAll}).code, 0);
  EXPECT_TRUE(ended());
}

TEST_F(NotifierProcessTest, aClickOpensTheApplicationWithTheLink) {
  NotificationServer server(bus_);
  ask(note("button"));
  ASSERT_TRUE(shows(server, {"button"}));
  auto plain = note("body");
  plain.userInfo.clear();
  run(plain);
  ASSERT_TRUE(shows(server, {"button", "body"}));
  server.choose(server.numberOf("button"), "crv.openDeferralPrompt");
  ASSERT_TRUE(shows(server, {"body"}));
  EXPECT_TRUE(wait([&] { return TemporaryFolder::read(opened()) == "1:corvane://show-deferral-prompt::7\n"; }));
  server.choose(server.numberOf("body"), "default");
  EXPECT_TRUE(ended());
  EXPECT_TRUE(wait([&] { return TemporaryFolder::read(opened()) == "1:corvane://show-deferral-prompt::7\n0:::7\n"; }));
}

TEST_F(NotifierProcessTest, itEndsWithTheSession) {
  const auto later = dateFromSecondsSince1970(4e9);
  auto waiting = ask(note("one", later)).exit;
  const auto other = ask(note("two", later)).exit;
  ASSERT_TRUE(ended(1)) << "one has handed over";
  if (waiting->has_value()) waiting = other;
  bus_.end();
  ASSERT_TRUE(ended());
  EXPECT_EQ((*waiting)->code, 1);
  EXPECT_EQ((*waiting)->errors, "Corvane Notification: The desktop session has ended.\n");
  bus_.start();
}

TEST_F(NotifierProcessTest, manyAtOnceLoseNothing) {
  const NotificationServer server(bus_);
  for (int round = 0; round < 3; ++round) {
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i) {
      ask({.operation = i % 2 == 0 ? Operation::cancel : Operation::clearDelivered});
      names.push_back("note " + std::to_string(i));
    }
    ended(0);
    for (const auto& name : names) ask(note(name));
    ask({.operation = Operation::cancel, .identifiers = {"never"}});
    EXPECT_TRUE(wait([&] { return server.titles().size() == names.size(); }));
    EXPECT_TRUE(ended(1));
    EXPECT_EQ(run({.operation = Operation::clearAll}).code, 0);
    EXPECT_TRUE(ended());
    EXPECT_TRUE(shows(server, {}));
  }
}

}  // namespace
}  // namespace corvane::testing
