// What every answer to the HelperRegistration port does. Instantiate with a world that has `registration()`,
// `install()`, which puts a helper there that could run, `helperRuns()`, `helperEnds()`, by which one that runs ends by
// itself and stays so, `starts()`, how many helpers have begun, and `wait(done)`, which lets turns pass until `done`
// holds and gives whether it came to hold.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "platform/helper_registration.h"

namespace corvane::testing {

template <class World>
class HelperRegistrationContract : public ::testing::Test {
 protected:
  HelperRegistration& registration() { return world_.registration(); }
  bool becomes(HelperStatus status) {
    return world_.wait([&] { return registration().status() == status; });
  }
  bool runs(bool expected) {
    return world_.wait([&] {
      return world_.helperRuns() == expected && registration().printExitCode() == (expected ? 0 : kDaemonNotLoaded);
    });
  }
  bool registers() { return registration().registerDaemon().has_value(); }

  World world_;
};
TYPED_TEST_SUITE_P(HelperRegistrationContract);

TYPED_TEST_P(HelperRegistrationContract, WithoutAHelperThereIsNothingToRegister) {
  ASSERT_TRUE(this->becomes(HelperStatus::notFound));
  EXPECT_EQ(this->registration().kickstart(), kDaemonNotLoaded);
  EXPECT_FALSE(this->registers());
  EXPECT_EQ(this->registration().status(), HelperStatus::notFound);
}

TYPED_TEST_P(HelperRegistrationContract, TheHelperLivesThroughItsStates) {
  this->world_.install();
  ASSERT_TRUE(this->becomes(HelperStatus::notRegistered));
  EXPECT_EQ(this->registration().kickstart(), kDaemonNotLoaded);
  ASSERT_TRUE(this->runs(false)) << "and nothing was started";

  ASSERT_TRUE(this->registers());
  EXPECT_EQ(this->registration().status(), HelperStatus::enabled) << "at once";
  ASSERT_TRUE(this->runs(true));
  EXPECT_EQ(this->registration().kickstart(), 0);
  EXPECT_TRUE(this->runs(true));
  EXPECT_EQ(this->world_.starts(), 1) << "a running helper is kept";

  this->world_.helperEnds();
  ASSERT_TRUE(this->runs(false));
  EXPECT_EQ(this->registration().status(), HelperStatus::enabled) << "registered as before";
  EXPECT_EQ(this->registration().kickstart(), 0);
  ASSERT_TRUE(this->runs(true));
  ASSERT_TRUE(this->registers()) << "again";
  EXPECT_TRUE(this->runs(true));
  EXPECT_EQ(this->world_.starts(), 2);
}

TYPED_TEST_P(HelperRegistrationContract, UnregisteringEndsTheHelperAndAllCallsEndWithIt) {
  this->world_.install();
  ASSERT_TRUE(this->becomes(HelperStatus::notRegistered));
  ASSERT_TRUE(this->registers());
  ASSERT_TRUE(this->runs(true));
  for (const bool registered : {true, false}) {
    int succeeded = 0;
    for (int i = 0; i < 2; ++i)
      this->registration().unregisterDaemon([&](const Status& status) { succeeded += status ? 1 : 0; });
    EXPECT_EQ(succeeded, 0) << "answered in the same turn";
    ASSERT_TRUE(this->world_.wait([&] { return succeeded == 2; })) << registered;
    EXPECT_FALSE(this->world_.helperRuns());
    EXPECT_EQ(this->registration().status(), HelperStatus::notRegistered);
    EXPECT_EQ(this->registration().printExitCode(), kDaemonNotLoaded);
  }
  ASSERT_TRUE(this->registers()) << "anew";
  EXPECT_TRUE(this->runs(true));
}

REGISTER_TYPED_TEST_SUITE_P(HelperRegistrationContract, WithoutAHelperThereIsNothingToRegister,
                            TheHelperLivesThroughItsStates, UnregisteringEndsTheHelperAndAllCallsEndWithIt);

}  // namespace corvane::testing
