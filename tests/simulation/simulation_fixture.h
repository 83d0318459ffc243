// A simulated Mac for a test: three applications with updates on a Monday, and the rules held at the end.
#pragma once

#include <fmt/format.h>

#include "simulation/simulated_mac.h"
#include "support/test.h"

namespace corvane {

struct SimulationTest : testing::Test {
  void start() { mac = std::make_unique<SimulatedMac>(plan); }
  void TearDown() override {
    if (mac) {
      EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
    }
  }
  void expectDiary(std::string_view expected) const { EXPECT_EQ(mac->diary().text(), expected); }
  // The lines of the three installs from `moment` on and of the complete cycle at their end.
  static std::string allInstalled(const char* moment, const char* done, const char* how = "forced") {
    return fmt::format(
        "{0} {2}: anvil, bellows, crucible\n{1} installed anvil, bellows, crucible\n{1} the cycle is complete\n",
        moment, done, how);
  }
  static std::string forcedAt(const char* asked, const char* moment, const char* done) {
    return fmt::format("{} required: 3 applications by {}\n", asked, moment) + allInstalled(moment, done);
  }
  void hours(const char* from, const char* to) {
    plan.settings["BusinessHoursStartTime"] = PlistValue(from);
    plan.settings["BusinessHoursEndTime"] = PlistValue(to);
  }
  [[nodiscard]] const DeferralPromptPage& page() const { return mac->prompt().page(); }

  SimulatedMacPlan plan{.apps = {{.label = "anvil", .latest = "2.0"},
                                 {.label = "bellows", .latest = "2.0"},
                                 {.label = "crucible", .latest = "2.0"}}};
  std::unique_ptr<SimulatedMac> mac;
};

}  // namespace corvane
