// What every answer to the RunningApplications port does. Instantiate with a world that has `applications()`,
// `open(name)`, which starts a bundle of that name with the identifier "test.<name>" and gives its process, and
// `wait(done)`, which lets turns pass until `done` holds and gives whether it came to hold.
#pragma once

#include "platform/running_applications.h"
#include "support/test.h"

namespace corvane::testing {

template <class World>
struct RunningApplicationsContract : ::testing::Test {
  std::optional<RunningProcess> find(pid_t pid) {
    const auto list = world_.applications().list();
    if (!list) return std::nullopt;
    const auto found = std::ranges::find(*list, pid, &RunningProcess::pid);
    return found == list->end() ? std::nullopt : std::optional(*found);
  }
  bool comesUp(pid_t pid) {
    return world_.wait([&] {
      const auto process = find(pid);
      return process && process->bundlePath.has_value();
    });
  }
  bool goes(pid_t pid) {
    return world_.wait([&] { return !find(pid).has_value(); });
  }

  World world_;
};
TYPED_TEST_SUITE_P(RunningApplicationsContract);

TYPED_TEST_P(RunningApplicationsContract, AnOpenBundleIsToldByPathNameAndIdentifier) {
  const auto pid = this->world_.open("Sketch Pad");
  ASSERT_TRUE(this->comesUp(pid));
  const auto process = this->find(pid);
  EXPECT_EQ(process->name(), "Sketch Pad");
  EXPECT_TRUE(process->bundlePath->ends_with("/Sketch Pad.app"));
  EXPECT_EQ(process->bundleIdentifier, "test.Sketch Pad");
  EXPECT_FALSE(process->active);
}

TYPED_TEST_P(RunningApplicationsContract, BothWaysOfEndingEnd) {
  const auto polite = this->world_.open("Polite");
  ASSERT_TRUE(this->comesUp(polite));
  EXPECT_TRUE(this->world_.applications().terminate(polite));
  EXPECT_TRUE(this->goes(polite));
  const auto forced = this->world_.open("Forced");
  ASSERT_TRUE(this->comesUp(forced));
  EXPECT_TRUE(this->world_.applications().forceTerminate(forced));
  EXPECT_TRUE(this->goes(forced));
}

TYPED_TEST_P(RunningApplicationsContract, RequestsToNobodyAreRefused) {
  auto& applications = this->world_.applications();
  for (const pid_t nobody : {-1, 0, 1, 4'100'000}) {
    EXPECT_FALSE(applications.terminate(nobody)) << nobody;
    EXPECT_FALSE(applications.forceTerminate(nobody)) << nobody;
    EXPECT_FALSE(applications.raise(nobody)) << nobody;
  }
}

REGISTER_TYPED_TEST_SUITE_P(RunningApplicationsContract, AnOpenBundleIsToldByPathNameAndIdentifier, BothWaysOfEndingEnd,
                            RequestsToNobodyAreRefused);

}  // namespace corvane::testing
