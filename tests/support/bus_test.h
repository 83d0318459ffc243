// A test with a bus of its own, a loop, and a link between them.
#pragma once

#include "platform/dbus/bus_link.h"
#include "platform/uv/uv_work_queue.h"
#include "support/private_bus.h"
#include "support/real_loop.h"
#include "support/test.h"

namespace corvane::testing {

constexpr BusHabits kBrisk{.firstRetry = 5ms, .lastRetry = 20ms};

// What a service and those who ask it lean on.
struct BusSession {
  bool wait(const std::function<bool()>& done) { return loop_.wait(done); }

  PrivateBus bus_;
  RealLoop loop_;
  UvWorkQueue work_;
};

template <class Session>
struct SessionTest : ::testing::Test, Session {
  void SetUp() override {
    if (!isInstalled(PrivateBus::kDaemon)) GTEST_SKIP() << "needs dbus-daemon";
    ASSERT_TRUE(this->bus_.works());
  }
};

using BusTest = SessionTest<BusSession>;

struct BusLinkedTest : BusTest {
  BusLink link_{loop_.loop(), loop_.mainQueue(), work_, bus_.address(), kBrisk};
};

}  // namespace corvane::testing
