#include <fstream>

#include "platform/linux/sys_power_source.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {
namespace {

struct PowerSourceTest : ::testing::Test {
  void put(const char* supply, const char* file, const char* text) {
    std::filesystem::create_directories(folder_.path() / supply);
    std::ofstream(folder_.path() / supply / file) << text << '\n';
  }
  [[nodiscard]] bool onAC() const { return SysPowerSource(folder_.path()).isOnACPower(); }

  TemporaryFolder folder_;
};

TEST_F(PowerSourceTest, aMachineWithoutABatteryIsAlwaysOnAC) {
  EXPECT_TRUE(onAC());
  EXPECT_TRUE(SysPowerSource(folder_.path() / "absent").isOnACPower());
  put("mouse", "type", "Battery");
  put("mouse", "scope", "Device");
  EXPECT_TRUE(onAC()) << "a mouse's battery says nothing of the machine";
}

TEST_F(PowerSourceTest, aBatteryAloneIsNoACUntilAnAdapterIsOnline) {
  put("BAT0", "type", "Battery");
  EXPECT_FALSE(onAC());
  put("AC", "type", "Mains");
  put("AC", "online", "0");
  EXPECT_FALSE(onAC());
  put("usb", "type", "USB");
  put("usb", "online", "1");
  EXPECT_TRUE(onAC());
}

}  // namespace
}  // namespace corvane::testing
