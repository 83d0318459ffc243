#include <gtest/gtest.h>

#include "platform/linux/sys_network_probe.h"
#include "platform/scripted/virtual_time.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

struct NetworkProbeTest : ::testing::Test {
  TemporaryFolder folder;

  void interface(const std::string& name, const std::string& type, const std::string& state, const char* carrier) {
    folder.write(name + "/type", type + "\n");
    folder.write(name + "/operstate", state + "\n");
    folder.write(name + "/carrier", std::string(carrier) + "\n");
  }
  static bool linkIn(const std::filesystem::path& interfaces) {
    VirtualMachine machine;
    SysNetworkProbe probe(machine.main(), interfaces);
    std::optional<NetworkState> answer;
    probe.probe([&](const NetworkState& state) { answer = state; });
    EXPECT_FALSE(answer) << "never inline";
    machine.runUntilIdle();
    EXPECT_FALSE(answer.value().captivePortal) << "nobody looked";
    return answer->hasLink;
  }
};

TEST_F(NetworkProbeTest, AnInterfaceThatIsUpIsALinkAndTheLoopbackIsNone) {
  std::filesystem::create_directories(folder.path());
  EXPECT_FALSE(linkIn(folder.path()));
  interface("lo", "772", "unknown", "1");
  interface("eth0", "1", "down", "0");
  interface("tun0", "65534", "unknown", "0");
  EXPECT_FALSE(linkIn(folder.path()));
  interface("tun0", "65534", "unknown", "1");
  EXPECT_TRUE(linkIn(folder.path()));
  interface("tun0", "65534", "down", "0");
  interface("wlan0", "1", "up", "1");
  EXPECT_TRUE(linkIn(folder.path()));
  EXPECT_TRUE(linkIn(folder.path() / "absent")) << "what cannot be told stops nothing";
}

}  // namespace
}  // namespace corvane::testing
