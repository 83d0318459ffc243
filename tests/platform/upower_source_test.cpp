#include "platform/dbus/upower_source.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

#include "platform/scripted/scripted_surroundings.h"
#include "platform/uv/uv_work_queue.h"
#include "support/private_bus.h"
#include "support/real_loop.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.freedesktop.UPower";

// A power service whose battery a test plugs and unplugs.
class PowerService {
 public:
  PowerService(const PrivateBus& bus, bool onBattery)
      : onBattery_(onBattery), service_(bus, kName), object_(service_.at("/org/freedesktop/UPower")) {
    object_.registerProperty("OnBattery").onInterface(kName).withGetter([this] { return onBattery_.load(); });
    service_.answer();
  }
  void onBattery(bool now) {
    onBattery_ = now;
    object_.emitPropertiesChangedSignal(kName, {"OnBattery"});
  }

 private:
  std::atomic<bool> onBattery_;
  BusService service_;
  sdbus::IObject& object_;
};

}  // namespace

class UPowerSourceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!isInstalled(PrivateBus::kDaemon)) GTEST_SKIP() << "needs dbus-daemon";
    ASSERT_TRUE(bus_.works());
  }
  bool becomes(const PowerSource& source, bool onAC) {
    return loop_.wait([&] { return source.isOnACPower() == onAC; });
  }

  PrivateBus bus_;
  RealLoop loop_;
  UvWorkQueue work_;
  BusLink link_{loop_.loop(), loop_.mainQueue(), work_, bus_.address(), {.firstRetry = 5ms, .lastRetry = 20ms}};
  ScriptedPowerSource kernel_;
};

TEST_F(UPowerSourceTest, TheServicesWordCountsAndIsKeptCurrent) {
  const UPowerSource source(link_, kernel_);
  EXPECT_TRUE(source.isOnACPower()) << "the kernel's word, at once";
  auto service = std::make_unique<PowerService>(bus_, true);
  EXPECT_TRUE(becomes(source, false));
  service->onBattery(false);
  EXPECT_TRUE(becomes(source, true));
  service->onBattery(true);
  EXPECT_TRUE(becomes(source, false));

  service.reset();
  EXPECT_TRUE(becomes(source, true)) << "the kernel's word again";
  service = std::make_unique<PowerService>(bus_, true);
  EXPECT_TRUE(becomes(source, false));
  service.reset();
  bus_.end();
  EXPECT_TRUE(becomes(source, true)) << "without a bus";
}

TEST_F(UPowerSourceTest, WithoutAServiceTheKernelTells) {
  bus_.makeStartable(kName, "/bin/false");
  BusLink none(loop_.loop(), loop_.mainQueue(), work_, std::nullopt);
  const UPowerSource lonely(none, kernel_);
  const UPowerSource waiting(link_, kernel_);
  for (const bool onAC : {true, false}) {
    kernel_.onACPower = onAC;
    for (const auto* source : {&lonely, &waiting}) {
      EXPECT_EQ(source->isOnACPower(), onAC);
      loop_.look();
      EXPECT_EQ(source->isOnACPower(), onAC);
    }
  }
}

TEST_F(UPowerSourceTest, AnAnswerThatIsNoneIsNotBelieved) {
  kernel_.onACPower = false;
  const UPowerSource source(link_, kernel_);
  std::atomic<int> asked = 0;
  BusService odd(bus_, kName);
  odd.at("/org/freedesktop/UPower").registerProperty("OnBattery").onInterface(kName).withGetter([&] {
    ++asked;
    return std::string("no");
  });
  odd.answer();
  ASSERT_TRUE(loop_.wait([&] { return asked > 0; }));
  loop_.look();
  EXPECT_FALSE(source.isOnACPower());
}

}  // namespace corvane::testing
