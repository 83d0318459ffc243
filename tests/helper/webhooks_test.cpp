// What chats are told of runs, and what happens when they do not listen.
#include "helper/webhooks.h"

#include "base/json.h"
#include "core/client/helper_messages.h"
#include "platform/scripted/scripted_http_client.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/test.h"

namespace corvane {
namespace {

constexpr const char* kSlack = "https://hooks.example.org/services/SECRET1";
constexpr const char* kTeams = "https://flow.example.org/SECRET2?sig=SECRET3";

PatchOutcome installed(const char* label) {
  return {.label = Label(label), .name = "Quill <Pro>", .version = "2.4", .installed = true, .text = "installed"};
}
PatchOutcome failed(const char* label) {
  return {.label = Label(label),
          .status = PatchingStatus::failure,
          .code = 5,
          .targetVersion = "3",
          .text = "ended with code 5"};
}
PatchOutcome current(const char* label) { return {.label = Label(label), .receipt = false, .text = "is current"}; }

struct WebhooksFixture : ::testing::Test {
  VirtualMachine machine;
  RecordingLog log;
  ScriptedHttpClient http{machine.main()};
  Webhooks hooks{{.main = machine.main(), .http = http, .log = log, .computer = "mac-7"}};
  CorvaneConfiguration config;

  WebhooksFixture() {
    config.webhookFeature = WebhookFeature::all;
    config.webhookURLSlack = kSlack;
    answer(kSlack, 200);
    answer(kTeams, 202);
  }
  ~WebhooksFixture() override {
    for (const auto& line : log.messages()) {
      EXPECT_EQ(line.find("SECRET"), std::string::npos) << line;
      EXPECT_EQ(line.find("example.org"), std::string::npos) << line;
    }
  }
  void answer(const char* url, int status) { http.pages[url] = {.status = status, .body = "ok", .headers = {}}; }
  void end(const RunReport& report) {
    hooks.runEnded(report, config);
    machine.runUntilIdle();
  }
};

TEST(WebhookMessage, IsWorthSendingAsTheSettingsSay) {
  const RunReport good{.outcomes = {installed("quill"), current("pen")}};
  const RunReport bad{.outcomes = {installed("quill"), failed("stamp")}};
  const RunReport idle{.outcomes = {current("pen")}};
  const RunReport broken{.outcomes = {}, .error = helperError(HelperErrorCode::notReady, "Installomator not found")};
  const RunReport cutOff{.outcomes = {failed("stamp")}, .error = helperError(HelperErrorCode::stopping, "stopping")};
  const std::tuple<const RunReport&, bool, bool> rows[] = {
      {good, false, true}, {bad, true, true}, {idle, false, false}, {broken, true, true}, {cutOff, false, false}};
  CorvaneConfiguration config;
  for (const auto& [report, failures, all] : rows) {
    const auto told = [&](WebhookFeature feature) {
      config.webhookFeature = feature;
      return webhookMessage(report, config, "mac").has_value();
    };
    EXPECT_FALSE(told(WebhookFeature::off));
    EXPECT_EQ(told(WebhookFeature::failures), failures);
    EXPECT_EQ(told(WebhookFeature::all), all);
  }
  config.webhookFeature = WebhookFeature::all;
  const auto message = webhookMessage(bad, config, "mac-7").value();
  EXPECT_EQ(message.title, "Corvane on mac-7: Updated 1 of 2. Failed: stamp.");
  EXPECT_EQ(message.lines,
            (std::vector<std::string>{"Quill <Pro> 2.4: installed", "stamp 3: failed: ended with code 5"}));
  RunReport many;
  for (std::size_t i = 0; i < kWebhookLines + 3; ++i) many.outcomes.push_back(installed("quill"));
  const auto cut = webhookMessage(many, config, "mac").value();
  EXPECT_EQ(cut.lines.size(), kWebhookLines + 1);
  EXPECT_EQ(cut.lines.back(), "and 3 more");
}

TEST_F(WebhooksFixture, EachChatIsToldInItsOwnFormAndReadsNoMarkup) {
  config.webhookURLTeams = kTeams;
  end({.outcomes = {installed("quill")}});
  ASSERT_EQ(http.requests().size(), 2U);
  const auto slack = parseJson(http.requests()[0].body.value()).value();
  EXPECT_EQ(slack.find("text")->string(), "Corvane on mac-7: Updated 1 of 1.\n• Quill &lt;Pro&gt; 2.4: installed");
  const auto teams = parseJson(http.requests()[1].body.value()).value();
  const auto& card = *teams.find("attachments")->array()->front().find("content");
  EXPECT_EQ(card.find("type")->string(), "AdaptiveCard");
  EXPECT_EQ(card.find("body")->array()->size(), 2U);
  machine.advance(24h);
  EXPECT_EQ(http.requests().size(), 2U);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(WebhooksFixture, WhatMayPassIsTriedAFewTimesAndTheRestGivenUp) {
  answer(kSlack, 503);
  end({.outcomes = {installed("quill")}});
  machine.advance(31s);
  EXPECT_EQ(http.requests().size(), 2U);
  answer(kSlack, 200);
  machine.advance(1h);
  EXPECT_EQ(http.requests().size(), 3U);
  EXPECT_TRUE(log.lines().empty());

  http.pages.clear();
  end({.outcomes = {installed("quill")}});
  machine.advance(24h);
  EXPECT_EQ(http.requests().size(), 3U + 1U + kWebhookPauses.size());
  EXPECT_TRUE(log.holds("A message to Slack was given up after 4 attempt(s): no answer."));

  answer(kSlack, 404);
  end({.outcomes = {installed("quill")}});
  machine.advance(24h);
  EXPECT_EQ(http.requests().size(), 8U) << "asking again would not help";
  EXPECT_TRUE(log.holds("answered with 404"));
}

TEST_F(WebhooksFixture, OnlySafeAddressesAreUsedAndAChatThatIsDownPilesUpLittle) {
  for (const char* url : {"http://hooks.example.org/SECRET", "ftp://x/SECRET", "file:///SECRET", "SECRET", "https://",
                          "http://127.0.0.1:80@example.org/SECRET", "http://127.0.0.1.example.org:80/SECRET"}) {
    config.webhookURLSlack = url;
    end({.outcomes = {installed("quill")}});
  }
  EXPECT_TRUE(http.requests().empty());
  EXPECT_EQ(log.count("no https address"), 7U);
  config.webhookURLSlack = kSlack;
  http.pages.clear();
  for (std::size_t i = 0; i < kWebhooksWaiting + 5; ++i) end({.outcomes = {installed("quill")}});
  EXPECT_EQ(log.count("too many wait already"), 5U);
  machine.advance(1h);
  end({.outcomes = {installed("quill")}});
  EXPECT_EQ(log.count("too many wait already"), 5U) << "places come free";
}

}  // namespace
}  // namespace corvane
