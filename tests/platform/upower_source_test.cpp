#include "platform/dbus/upower_source.h"

#include <atomic>

#include "platform/scripted/scripted_surroundings.h"
#include "support/bus_test.h"

namespace corvane::testing {

namespace {

constexpr const char* kName = "org.freedesktop.UPower";

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

struct UPowerSourceTest : BusLinkedTest {
  bool becomes(const PowerSource& source, bool onAC) {
    return wait([&] { return source.isOnACPower() == onAC; });
  }

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
