#include "base/main_queue_contract.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>

#include "base/lifeline.h"
#include "base/notification_center.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/uv_main_loop.h"
#include "platform/uv/uv_work_queue.h"

namespace corvane {
namespace {

struct UvDriver {
  SystemClock clock;
  UvMainLoop loop{clock};
  MainQueue& main() { return loop.mainQueue(); }
  bool runUntil(const std::function<bool()>& done) { return loop.pump(done, 10s); }
};

struct VirtualDriver {
  VirtualMachine machine;
  MainQueue& main() { return machine.main(); }
  bool runUntil(const std::function<bool()>& done) {
    machine.runUntilIdle();
    for (int i = 0; i < 100 && !done(); ++i) machine.advance(1ms);
    return done();
  }
};

using Drivers = testing::Types<UvDriver, VirtualDriver>;
INSTANTIATE_TYPED_TEST_SUITE_P(Real, MainQueueContract, Drivers);

TEST(UvMainLoopTest, QuitGivesItsCodeAndEndsAPump) {
  SystemClock clock;
  UvMainLoop loop(clock);
  loop.mainQueue().post([&] { loop.quit(7); });
  EXPECT_EQ(loop.run(), 7);
  EXPECT_FALSE(loop.pump([] { return false; }, 10s));
}

TEST(UvMainLoopTest, APumpEndsAtItsLimit) {
  SystemClock clock;
  UvMainLoop loop(clock);
  EXPECT_FALSE(loop.pump([] { return false; }, 2ms));
}

// The wall clock of a machine that somebody sets, or that sleeps.
struct JumpingClock final : Clock {
  [[nodiscard]] Date now() const override { return real.now() + ahead; }
  [[nodiscard]] SteadyTime steadyNow() const override { return real.steadyNow(); }
  SystemClock real;
  Duration ahead{};
};

TEST(UvMainLoopTest, AJumpOfTheClockIsNoticedAtOnce) {
  JumpingClock clock;
  const int jumps = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  {
    UvMainLoop loop(clock, jumps);
    bool rang = false;
    const auto alarm = loop.mainQueue().at(clock.now() + 8h, [&] { rang = true; });
    EXPECT_FALSE(loop.pump([&] { return rang; }, 2ms));
    clock.ahead = 8h;
    ASSERT_EQ(::eventfd_write(jumps, 1), 0);
    EXPECT_TRUE(loop.pump([&] { return rang; }, 10s)) << "without the word of it the next look is a minute away";
  }
  ::close(jumps);
}

TEST(UvWorkQueueTest, AnswersComeBackAndDyingDropsWhatWaits) {
  SystemClock clock;
  UvMainLoop loop(clock);
  const auto witness = std::make_shared<int>(1);
  std::atomic<int> started = 0;
  std::optional<bool> ranOnMain;
  std::atomic<bool> open = false;
  {
    UvWorkQueue work;
    std::optional<int> answer;
    runThen(
        work, loop.mainQueue(),
        [&] {
          ranOnMain = loop.mainQueue().isMainThread();
          return 41;
        },
        [&](int value) { answer = value + 1; });
    EXPECT_TRUE(loop.pump([&] { return answer.has_value(); }, 10s));
    EXPECT_EQ(answer, 42);
    for (int i = 0; i < 20; ++i)
      work.run([&started, &open, witness] {
        ++started;
        open.wait(false);
      });
    while (started < 2) std::this_thread::yield();
    std::thread opener([&] {
      open = true;
      open.notify_all();
    });
    opener.join();
  }
  EXPECT_EQ(ranOnMain, false);
  EXPECT_EQ(witness.use_count(), 1);
}

TEST(VirtualMachineTest, MissedFiringsAreNotMadeUpFor) {
  VirtualMachine machine;
  std::vector<Duration> firings;
  const auto begin = machine.steadyNow();
  const auto lease = machine.main().every(10s, [&] { firings.push_back(machine.steadyNow() - begin); });
  machine.setLateness(25s);
  machine.advance(40s);
  EXPECT_EQ(firings, (std::vector<Duration>{35s, 40s}));
}

TEST(VirtualMachineTest, WallAlarmsFollowTheWallClock) {
  VirtualMachine machine;
  std::string heard;
  const auto wall = machine.main().at(machine.now() + 2h, [&] { heard += "w"; });
  const auto steady = machine.main().after(1h, [&] { heard += "s"; });
  machine.suspend(2h);
  EXPECT_EQ(heard, "w");
  machine.advance(1h);
  EXPECT_EQ(heard, "ws");
  const auto jumped = machine.main().at(machine.now() + 24h, [&] { heard += "j"; });
  machine.setWallClock(machine.now() + 25h);
  EXPECT_EQ(heard, "ws");
  machine.advance(1min);
  EXPECT_EQ(heard, "wsj");
}

TEST(VirtualMachineTest, AClockSetBackPostponesAnAlarm) {
  VirtualMachine machine;
  std::optional<Date> fired;
  const auto due = machine.now() + 1h;
  const auto lease = machine.main().at(due, [&] { fired = machine.now(); });
  machine.advance(30min);
  machine.setWallClock(machine.now() - 5h);
  machine.advance(1h);
  EXPECT_EQ(fired, std::nullopt);
  machine.advanceTo(due + 1s);
  EXPECT_EQ(fired, due);
}

TEST(TurnQueueTest, AlarmsWithLeewayWaitForOneAnother) {
  SteadyTime now{};
  TurnQueue queue({.steady = [&] { return now; }, .wall = [] { return Date{}; }}, [] {});
  EXPECT_EQ(queue.timeToNext(), std::nullopt);
  const auto loose = queue.after(
      10s, [] {}, 20s);
  const auto strict = queue.after(
      15s, [] {}, 0s);
  EXPECT_EQ(queue.timeToNext(), 10s);
  EXPECT_EQ(queue.timeToNext(TurnQueue::Leeway::used), 15s);
}

TEST(TurnQueueTest, LeasesAndDroppedClosuresMayOutliveTheQueue) {
  Lease lease;
  {
    auto held = std::make_shared<Lease>();
    TurnQueue queue({.steady = [] { return SteadyTime{}; }, .wall = [] { return Date{}; }}, [] {});
    *held = queue.every(
        1s, [] {}, 0s);
    lease = queue.after(
        1s, [held] {}, 0s);
    queue.post([held] {});
  }
  lease.release();
  EXPECT_FALSE(lease.active());
}

struct Ping {
  int value;
};

TEST(NotificationCenterTest, ObserversMayLeaveAndComeDuringAPost) {
  VirtualMachine machine;
  NotificationCenter center(machine.main());
  std::string heard;
  Lease second;
  Lease late;
  const auto first = center.observe<Ping>([&](const Ping& ping) {
    heard += std::to_string(ping.value);
    second.release();
    if (!late.active()) late = center.observe<Ping>([&](const Ping&) { heard += "late"; });
  });
  second = center.observe<Ping>([&](const Ping&) { heard += "never"; });
  center.post(Ping{1});
  EXPECT_EQ(heard, "1");
  std::thread([&] { center.post(Ping{2}); }).join();
  EXPECT_EQ(heard, "1");
  machine.runUntilIdle();
  EXPECT_EQ(heard, "12late");
}

TEST(LifelineTest, CallsAfterTheOwnersEndAreDroppedOrTakeTheOtherRoad) {
  std::string heard;
  auto owner = std::make_unique<Lifeline>();
  auto plain = owner->guard([&](int value) { heard += std::to_string(value); });
  auto either = owner->guard([&] { heard += "call"; }, [&] { heard += "otherwise"; });
  plain(1);
  owner.reset();
  plain(2);
  either();
  EXPECT_EQ(heard, "1otherwise");
}

TEST(CompletionTest, RunsOnceThroughMovesAndMayBeAbandoned) {
  int sum = 0;
  Completion<int> first([&](int value) { sum += value; });
  Completion<int> second(std::move(first));
  EXPECT_FALSE(first);
  second(5);
  EXPECT_FALSE(second);
  Completion<int> third([&](int value) { sum += value; });
  third.abandon();
  EXPECT_EQ(sum, 5);
}

#ifndef NDEBUG
TEST(CompletionDeathTest, DroppingOneUnrunIsNoticed) {
  EXPECT_DEATH({ Completion<int> dropped([](int) {}); }, "dropped without having run");
}
#endif

}  // namespace
}  // namespace corvane
