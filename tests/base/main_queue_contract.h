// What every main queue promises, whatever waits for it. A driver gives `main()` and
// `runUntil(predicate)`, which lets turns pass until the predicate holds and gives whether it came to hold.
#pragma once

#include <thread>

#include "base/main_queue.h"
#include "platform/posix/system_clock.h"
#include "support/test.h"

namespace corvane {

template <class Driver>
struct MainQueueContract : testing::Test {
  MainQueue& main() { return driver.main(); }
  Task note(std::string what) {
    return [this, what = std::move(what)] { heard += what; };
  }
  bool runUntilHeard(const std::string& expected) {
    return driver.runUntil([&] { return heard == expected; });
  }
  // Lets what is ready and what a few milliseconds bring run.
  void settle() {
    bool passed = false;
    const auto lease = main().after(5ms, [&passed] { passed = true; });
    ASSERT_TRUE(driver.runUntil([&passed] { return passed; }));
  }

  Driver driver;
  std::string heard;
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, PostsRunInOrderAndNeverInline) {
  this->main().post(this->note("a"));
  this->main().post([this] {
    this->main().post(this->note("c"));
    this->heard += "b";
  });
  EXPECT_EQ(this->heard, "");
  EXPECT_TRUE(this->runUntilHeard("abc"));
}

TYPED_TEST_P(MainQueueContract, PostsOfOtherThreadsWakeTheMainThread) {
  std::optional<bool> onMain;
  bool elsewhere = true;
  std::thread other([&] {
    elsewhere = this->main().isMainThread();
    this->main().post([&] { onMain = this->main().isMainThread(); });
  });
  other.join();
  EXPECT_TRUE(this->driver.runUntil([&] { return onMain.has_value(); }));
  EXPECT_EQ(onMain, true);
  EXPECT_FALSE(elsewhere);
}

TYPED_TEST_P(MainQueueContract, TimersRunByDueTimeThenByArming) {
  const auto late = this->main().after(6ms, this->note("d"));
  const auto first = this->main().after(-1s, this->note("a"));
  const auto second = this->main().after(2ms, this->note("b"));
  const auto third = this->main().after(2ms, this->note("c"));
  EXPECT_TRUE(this->runUntilHeard("abcd"));
}

TYPED_TEST_P(MainQueueContract, APostMadeByATimerRunsBeforeTheNextTimer) {
  const auto first = this->main().after(1ms, [this] {
    this->main().post(this->note("b"));
    this->heard += "a";
  });
  const auto second = this->main().after(1ms, this->note("c"));
  EXPECT_TRUE(this->runUntilHeard("abc"));
}

TYPED_TEST_P(MainQueueContract, ACancelledTaskNeverRunsNotEvenWhenItWasDue) {
  Lease victim;
  const auto killer = this->main().after(0ms, [&] { victim.release(); });
  victim = this->main().after(0ms, this->note("x"));
  { const auto dropped = this->main().at(Date{}, this->note("y")); }
  this->settle();
  EXPECT_EQ(this->heard, "");
}

TYPED_TEST_P(MainQueueContract, ARepeatingTaskMayEndItself) {
  Lease lease;
  lease = this->main().every(1ms, [&] {
    this->heard += "t";
    if (this->heard == "ttt") lease.release();
  });
  EXPECT_TRUE(this->runUntilHeard("ttt"));
  this->settle();
  EXPECT_EQ(this->heard, "ttt");
}

TYPED_TEST_P(MainQueueContract, ADateInThePastFiresInALaterTurn) {
  const auto lease = this->main().at(Date{}, this->note("a"));
  EXPECT_EQ(this->heard, "");
  EXPECT_TRUE(this->runUntilHeard("a"));
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, PostsRunInOrderAndNeverInline, PostsOfOtherThreadsWakeTheMainThread,
                            TimersRunByDueTimeThenByArming, APostMadeByATimerRunsBeforeTheNextTimer,
                            ACancelledTaskNeverRunsNotEvenWhenItWasDue, ARepeatingTaskMayEndItself,
                            ADateInThePastFiresInALaterTurn);

}  // namespace corvane
