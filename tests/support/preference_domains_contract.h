// What every answer to the PreferenceDomains port does. Instantiate with a world that has `domains()`,
// `writeUser(dict)` and `writeManaged(dict)` as another program would, and `settle()`, which lets watchers hear.
#pragma once

#include "platform/preference_domains.h"
#include "support/test.h"

namespace corvane::testing {

template <class World>
struct PreferenceDomainsContract : ::testing::Test {
  World world_;
};
TYPED_TEST_SUITE_P(PreferenceDomainsContract);

TYPED_TEST_P(PreferenceDomainsContract, OwnChangesAreSeenAtOnceAndMoveTheVersion) {
  auto& domains = this->world_.domains();
  const auto before = domains.user();
  const auto managed = domains.managed();
  EXPECT_TRUE(before.values->empty() && managed.values->empty()) << "files that are missing";
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values["A"] = 1; }));
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values["B"] = "two"; }));
  const auto after = domains.user();
  EXPECT_EQ(*after.values, (PlistDict{{"A", 1}, {"B", "two"}}));
  EXPECT_NE(after.version, before.version);
  EXPECT_EQ(domains.versions(), (PreferenceDomains::Versions{.user = after.version, .managed = managed.version}));
  EXPECT_TRUE(before.values->empty()) << "a snapshot never changes";
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values["A"] = 1; }));
  EXPECT_EQ(domains.user().version, after.version) << "nothing has changed";
}

TYPED_TEST_P(PreferenceDomainsContract, ChangesOfOthersAreReadAndKeptByOurs) {
  auto& domains = this->world_.domains();
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values["Ours"] = 1; }));
  this->world_.writeUser({{"Ours", 1}, {"Theirs", true}});
  this->world_.writeManaged({{"Managed", "yes"}});
  EXPECT_EQ(domains.user().values->count("Theirs"), 1U);
  EXPECT_EQ(*domains.managed().values, (PlistDict{{"Managed", "yes"}}));
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values.erase("Ours"); }));
  EXPECT_EQ(*domains.user().values, (PlistDict{{"Theirs", true}}));
}

TYPED_TEST_P(PreferenceDomainsContract, WatchersHearOthersButNotUs) {
  auto& domains = this->world_.domains();
  int heard = 0;
  auto lease = domains.watch([&] { ++heard; });
  ASSERT_TRUE(domains.changeUser([](PlistDict& values) { values["A"] = 1; }));
  this->world_.settle();
  EXPECT_EQ(heard, 0);
  this->world_.writeUser({{"A", 2}});
  this->world_.settle();
  EXPECT_EQ(heard, 1);
  this->world_.writeManaged({{"A", 3}});
  this->world_.settle();
  EXPECT_EQ(heard, 2);
  lease.release();
  this->world_.writeUser({{"A", 4}});
  this->world_.settle();
  EXPECT_EQ(heard, 2);
}

REGISTER_TYPED_TEST_SUITE_P(PreferenceDomainsContract, OwnChangesAreSeenAtOnceAndMoveTheVersion,
                            ChangesOfOthersAreReadAndKeptByOurs, WatchersHearOthersButNotUs);

}  // namespace corvane::testing
