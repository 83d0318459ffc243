// A simulated Mac for a test: three applications with updates on a Monday, and the rules held at the end.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "simulation/simulated_mac.h"

namespace corvane {

class SimulationTest : public testing::Test {
 protected:
  void start() { mac = std::make_unique<SimulatedMac>(plan); }
  void TearDown() override {
    if (mac) {
      EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
    }
  }
  // A diary of lines that end with the line, from the first.
  void expectDiary(std::string_view expected) const { EXPECT_EQ(mac->diary().text(), expected); }
  [[nodiscard]] const DeferralPromptPage& page() const { return mac->prompt().page(); }

  SimulatedMacPlan plan{.apps = {{.label = "anvil", .latest = "2.0"},
                                 {.label = "bellows", .latest = "2.0"},
                                 {.label = "crucible", .latest = "2.0"}}};
  std::unique_ptr<SimulatedMac> mac;
};

}  // namespace corvane
