#include "platform/dbus/bus_sole_process.h"

#include <thread>

#include "support/bus_test.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.example.Sole";

}  // namespace

struct BusSoleProcessTest : BusTest {
  // Another process would wait for our answer, so it is played on a thread while our loop turns.
  Status handOver(const std::string& message) {
    std::optional<Status> taken;
    std::thread other([&, address = bus_.address()] {
      RealLoop loop;
      BusSoleProcess process(loop.loop(), address, kName);
      auto status = process.claim();
      EXPECT_EQ(status, Result<bool>(false));
      auto result = process.handOver(message);
      loop_.mainQueue().post([&, result] { taken = result; });
    });
    EXPECT_TRUE(loop_.wait([&] { return taken.has_value(); }));
    other.join();
    return taken.value_or(failure("test", 0, "never answered"));
  }

  BusSoleProcess sole_{loop_.loop(), bus_.address(), kName};
  std::vector<std::string> received_;
  bool lost_ = false;

  void listen() {
    sole_.listen(
        [this](const std::string& message) -> Status {
          if (message == "bad") return failure("test", 1, "that is no message");
          received_.push_back(message);
          return {};
        },
        [this] { lost_ = true; });
  }
};

TEST_F(BusSoleProcessTest, theFirstHearsWhatOthersHandOver) {
  EXPECT_EQ(sole_.claim(), Result<bool>(true));
  EXPECT_EQ(sole_.claim(), Result<bool>(true)) << "still";
  listen();
  const std::string large(100'000, 'x');
  EXPECT_TRUE(handOver("one"));
  EXPECT_TRUE(handOver(large));
  EXPECT_THAT(received_, ElementsAre("one", large));
  const auto refused = handOver("bad");
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, SoleProcessError::refused);
  EXPECT_EQ(refused.error().text, "that is no message");
}

TEST_F(BusSoleProcessTest, whatComesBeforeItListensIsHeardThen) {
  ASSERT_EQ(sole_.claim(), Result<bool>(true));
  const auto later = loop_.mainQueue().after(50ms, [this] {
    EXPECT_EQ(sole_.claim(), Result<bool>(true)) << "reads what has come meanwhile";
    listen();
  });
  EXPECT_TRUE(handOver("early"));
  EXPECT_THAT(received_, ElementsAre("early"));
}

TEST_F(BusSoleProcessTest, whatALeavingProcessDidNotReceiveGoesBack) {
  ASSERT_EQ(sole_.claim(), Result<bool>(true));
  const auto later = loop_.mainQueue().after(50ms, [this] { sole_.leave(); });
  const auto back = handOver("late");
  ASSERT_FALSE(back);
  EXPECT_EQ(back.error().code, SoleProcessError::nobody);
  BusSoleProcess next(loop_.loop(), bus_.address(), kName);
  EXPECT_EQ(next.handOver("anyone").error().code, SoleProcessError::nobody);
  EXPECT_EQ(next.claim(), Result<bool>(true));
}

TEST_F(BusSoleProcessTest, oneThatDoesNotAnswerIsNotWaitedForLong) {
  ASSERT_EQ(sole_.claim(), Result<bool>(true));
  BusSoleProcess other(loop_.loop(), bus_.address(), kName,
                       {.bus = std::chrono::seconds(10), .other = std::chrono::milliseconds(50)});
  EXPECT_EQ(other.handOver("hello").error().code, SoleProcessError::silent);
}

TEST_F(BusSoleProcessTest, withoutABusThereIsNoSession) {
  for (const auto& address : {std::optional<std::string>(), std::optional<std::string>("unix:path=/nonexistent/bus"),
                              std::optional<std::string>("nonsense")}) {
    BusSoleProcess process(loop_.loop(), address, kName);
    const auto claimed = process.claim();
    ASSERT_FALSE(claimed);
    EXPECT_EQ(claimed.error().code, SoleProcessError::noSession);
    EXPECT_FALSE(claimed.error().text.empty());
    EXPECT_EQ(process.handOver("hello").error().code, SoleProcessError::noSession);
  }
  bus_.hang();
  BusSoleProcess process(loop_.loop(), bus_.address(), kName,
                         {.bus = std::chrono::milliseconds(50), .other = std::chrono::milliseconds(50)});
  EXPECT_EQ(process.claim().error().code, SoleProcessError::noSession);
  bus_.goOn();
}

TEST_F(BusSoleProcessTest, theEndOfTheSessionIsToldOnce) {
  ASSERT_EQ(sole_.claim(), Result<bool>(true));
  listen();
  bus_.end();
  EXPECT_TRUE(loop_.wait([this] { return lost_; }));
}

}  // namespace corvane::testing
