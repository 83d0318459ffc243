// What every answer to the UserNotifications port does. Instantiate with a world that has `notifications()`, `titles()`
// of what is on the screen, `choose(title, action)` and `dismiss(title)` for the user's doing, `refuse(bool)`,
// `inFront(bool)`, and `wait(done)`, which lets turns pass until `done` holds and gives whether it came to hold.
#pragma once

#include "platform/user_notifications.h"
#include "support/test.h"

namespace corvane::testing {

template <class World>
struct UserNotificationsContract : ::testing::Test, UserNotificationDelegate {
  static UserNotification note(const std::string& identifier, const std::string& title) {
    return {.identifier = identifier, .title = title, .body = "Body", .userInfo = {{"intent", identifier}}};
  }
  bool adds(UserNotification notification) {
    std::optional<Status> status;
    world_.notifications().add(std::move(notification), [&](Status given) { status = std::move(given); });
    EXPECT_FALSE(status) << "answered in the same turn";
    EXPECT_TRUE(world_.wait([&] { return status.has_value(); }));
    return status && *status;
  }
  bool shows(const std::vector<std::string>& titles) {
    return world_.wait([&] {
      auto now = world_.titles();
      std::ranges::sort(now);
      return now == titles;
    });
  }
  // All that was asked before has been carried out then.
  NotificationSettings settings() {
    std::optional<NotificationSettings> settings;
    world_.notifications().settings([&](NotificationSettings given) { settings = given; });
    EXPECT_TRUE(world_.wait([&] { return settings.has_value(); }));
    return settings.value_or(NotificationSettings{});
  }

  NotificationPresentationOptions willPresent(const UserNotification& notification) override {
    asked_.push_back(notification.identifier);
    return presented_;
  }
  void didReceive(const NotificationResponse& response, Task done) override {
    responses_.push_back(response);
    done();
  }
  void didClose(const std::string& identifier) override { closed_.push_back(identifier); }

  World world_;
  std::vector<std::string> asked_;
  std::vector<NotificationResponse> responses_;
  std::vector<std::string> closed_;
  NotificationPresentationOptions presented_{.banner = true, .sound = true};
};
TYPED_TEST_SUITE_P(UserNotificationsContract);

TYPED_TEST_P(UserNotificationsContract, OneIdentifierIsOneNotification) {
  EXPECT_TRUE(this->adds(this->note("a", "First")));
  EXPECT_TRUE(this->adds(this->note("b", "Other")));
  EXPECT_TRUE(this->shows({"First", "Other"}));
  EXPECT_TRUE(this->adds(this->note("a", "Second")));
  EXPECT_TRUE(this->shows({"Other", "Second"}));

  this->world_.notifications().removeDelivered({"a", "never shown"});
  EXPECT_TRUE(this->shows({"Other"}));
  this->world_.notifications().removeAllDelivered();
  EXPECT_TRUE(this->shows({}));
}

TYPED_TEST_P(UserNotificationsContract, ADelayedOneWaitsAndCanBeTakenBack) {
  auto& notifications = this->world_.notifications();
  auto later = this->note("later", "Later");
  later.delay = 1ms;
  EXPECT_TRUE(this->adds(later));
  EXPECT_TRUE(this->shows({"Later"}));
  for (const auto* identifier : {"one", "two", "three", "now"}) {
    auto never = this->note(identifier, identifier);
    never.delay = 1h;
    EXPECT_TRUE(this->adds(never));
  }
  EXPECT_TRUE(this->adds(this->note("now", "Now"))) << "takes the place of the one that waits";
  notifications.removeAllDelivered();
  notifications.removePending({"one", "now"});
  notifications.removeAllPending();
  EXPECT_TRUE(this->adds(this->note("end", "End")));
  EXPECT_TRUE(this->shows({"End"}));
}

TYPED_TEST_P(UserNotificationsContract, WhatTheUserChoseComesBackWithItsUserInfo) {
  auto& notifications = this->world_.notifications();
  notifications.setDelegate(this);
  notifications.setCategories({{.identifier = "c", .actions = {{.identifier = "open", .title = "Open"}}}});
  for (const auto* identifier : {"a", "b", "c"}) {
    auto given = this->note(identifier, identifier);
    given.categoryIdentifier = "c";
    EXPECT_TRUE(this->adds(given));
  }
  ASSERT_TRUE(this->shows({"a", "b", "c"}));
  this->world_.choose("a", std::nullopt);
  this->world_.choose("b", "open");
  ASSERT_TRUE(this->world_.wait([&] { return this->responses_.size() == 2; }));
  EXPECT_EQ(this->responses_[0].notificationIdentifier, "a");
  EXPECT_EQ(this->responses_[0].actionIdentifier, std::nullopt);
  EXPECT_EQ(this->responses_[1].notificationIdentifier, "b");
  EXPECT_EQ(this->responses_[1].actionIdentifier, "open");
  EXPECT_EQ(this->responses_[1].userInfo.at("intent"), "b");
  EXPECT_TRUE(this->shows({"c"})) << "what was chosen goes away";
  notifications.setDelegate(nullptr);
}

TYPED_TEST_P(UserNotificationsContract, OnlyWhatGoesByItselfIsToldToBeClosed) {
  auto& notifications = this->world_.notifications();
  notifications.setDelegate(this);
  for (const auto* identifier : {"closed", "removed", "replaced", "chosen", "last"})
    EXPECT_TRUE(this->adds(this->note(identifier, identifier)));
  EXPECT_TRUE(this->adds(this->note("replaced", "In its place")));
  notifications.removeDelivered({"removed"});
  ASSERT_TRUE(this->shows({"In its place", "chosen", "closed", "last"}));
  this->world_.choose("chosen", std::nullopt);
  this->world_.dismiss("closed");
  this->world_.dismiss("last");
  ASSERT_TRUE(this->world_.wait([&] { return this->closed_.size() == 2; }));
  EXPECT_THAT(this->closed_, ::testing::ElementsAre("closed", "last"));
  notifications.setDelegate(nullptr);
}

TYPED_TEST_P(UserNotificationsContract, InFrontTheDelegateDecides) {
  this->world_.notifications().setDelegate(this);
  EXPECT_TRUE(this->adds(this->note("behind", "Behind")));
  EXPECT_THAT(this->asked_, ::testing::IsEmpty());
  this->world_.inFront(true);
  EXPECT_TRUE(this->adds(this->note("banner", "Banner")));
  this->presented_.banner = false;
  EXPECT_TRUE(this->adds(this->note("none", "None")));
  EXPECT_THAT(this->asked_, ::testing::ElementsAre("banner", "none"));
  EXPECT_TRUE(this->shows({"Banner", "Behind"}));
  this->world_.notifications().setDelegate(nullptr);
}

TYPED_TEST_P(UserNotificationsContract, AServiceThatRefusesShowsNothing) {
  this->world_.refuse(true);
  EXPECT_FALSE(this->adds(this->note("a", "First")));
  this->world_.refuse(false);
  EXPECT_TRUE(this->adds(this->note("a", "Second")));
  EXPECT_TRUE(this->shows({"Second"}));
}

TYPED_TEST_P(UserNotificationsContract, AServiceThatIsThereAllowsWhatIsAskedFor) {
  EXPECT_EQ(this->settings(), (NotificationSettings{.authorization = NotificationAuthorization::authorized,
                                                    .badge = NotificationSetting::enabled}));
  std::optional<Result<bool>> granted;
  this->world_.notifications().requestAuthorization({.badge = true}, [&](auto given) { granted = given; });
  ASSERT_TRUE(this->world_.wait([&] { return granted.has_value(); }));
  EXPECT_EQ(*granted, Result<bool>(true));
}

REGISTER_TYPED_TEST_SUITE_P(UserNotificationsContract, OneIdentifierIsOneNotification,
                            ADelayedOneWaitsAndCanBeTakenBack, WhatTheUserChoseComesBackWithItsUserInfo,
                            OnlyWhatGoesByItselfIsToldToBeClosed, InFrontTheDelegateDecides,
                            AServiceThatRefusesShowsNothing, AServiceThatIsThereAllowsWhatIsAskedFor);

}  // namespace corvane::testing
