// Usage signals on the wire: virtual time for what waits, a real loop, real files and a real server for what goes.
#include <memory>

#include "diagnostics/usage_telemetry.h"
#include "platform/net/curl_http_client.h"
#include "platform/posix/posix_files.h"
#include "platform/scripted/scripted_entropy.h"
#include "support/environment_variable.h"
#include "support/real_loop.h"
#include "support/scripted_preferences.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/web_server.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

// Counts the answers, since a refused request changes nothing that could be waited for.
struct CountedHttp final : HttpClient {
  explicit CountedHttp(HttpClient& client) : real(client) {}
  void send(HttpRequest request, Completion<Result<HttpAnswer>> done) override {
    ++sent;
    real.send(std::move(request), [this, done = std::move(done)](Result<HttpAnswer> answer) mutable {
      done(std::move(answer));
      ++answers;
    });
  }
  void download(HttpRequest request, std::filesystem::path file, std::uint64_t limit,
                Completion<Result<HttpAnswer>> done) override {
    real.download(std::move(request), std::move(file), limit, std::move(done));
  }
  HttpClient& real;
  std::size_t sent = 0;
  std::size_t answers = 0;
};

struct UsageSignalsOverHttpTest : ::testing::Test {
  UsageSignalsOverHttpTest() {
    pointTo(server.url("/signals"));
    answer("204 No Content");
    launch();
  }
  void pointTo(const std::string& address) { stores.domains.setManaged({{"TelemetryEndpoint", address}}); }
  void answer(const std::string& status) { server.page("/signals", testing::WebServer::answer(status, "")); }
  void launch() {
    telemetry = nullptr;
    telemetry = std::make_unique<UsageTelemetry>(UsageTelemetryServices{.main = stores.machine.main(),
                                                                        .clock = stores.machine.clock(),
                                                                        .entropy = entropy,
                                                                        .files = files,
                                                                        .http = http,
                                                                        .preferences = stores.preferences,
                                                                        .notifications = stores.notifications,
                                                                        .log = stores.log,
                                                                        .queueFile = queue});
    telemetry->followSettings();
  }
  void set(bool enabled) {
    stores.preferences.writePreference("TelemetryEnabled", enabled);
    stores.notifications.post(CorvaneSettingsDidChange());
    stores.machine.runUntilIdle();
  }
  void send(const std::string& name) { telemetry->send({.name = name, .parameters = {{"pending", "2-5"}}}); }
  // Virtual time passes until a request goes out, then real time until it is answered.
  void oneRequest(Duration within) {
    const auto before = http.answers;
    stores.machine.advance(within);
    ASSERT_TRUE(loop.wait([&] { return http.answers > before; }));
  }
  void oneBatch() { oneRequest(UsageTelemetry::kGatheringTime * 2); }
  // The names in each request that arrived.
  [[nodiscard]] std::vector<std::vector<std::string>> arrived() const {
    std::vector<std::vector<std::string>> batches;
    for (const auto& request : server.requests()) {
      auto& names = batches.emplace_back();
      const auto body = parseJson(request.body);
      for (const auto& signal : *body->find("signals")->array()) names.emplace_back(*signal.find("name")->string());
    }
    return batches;
  }

  testing::EnvironmentVariable noProxy{"no_proxy", "*"};
  testing::TemporaryFolder folder;
  std::filesystem::path queue = folder.path() / "Library/Application Support/Corvane/usage-signals.json";
  testing::WebServer server;
  testing::RealLoop loop;
  CurlHttpClient client{loop.loop(), loop.mainQueue()};
  CountedHttp http{client};
  testing::ScriptedPreferences stores;
  PosixFiles files;
  ScriptedEntropy entropy;
  std::unique_ptr<UsageTelemetry> telemetry;
};

TEST_F(UsageSignalsOverHttpTest, BatchesArriveAsTheyAreDescribed) {
  for (std::size_t i = 0; i <= UsageTelemetry::kMostInABatch; ++i) send("Updates.checked");
  oneBatch();
  oneBatch();
  const auto requests = server.requests();
  ASSERT_THAT(requests, SizeIs(2));
  EXPECT_EQ(requests[0].line, "POST /signals HTTP/1.1");
  EXPECT_EQ(requests[0].headers.at("Content-Type"), "application/json");
  EXPECT_THAT(arrived(), ElementsAre(SizeIs(UsageTelemetry::kMostInABatch), SizeIs(1)));
  const auto body = *parseJson(requests[1].body);
  const auto session = std::string(*body.find("signals")->array()->front().find("session")->string());
  EXPECT_EQ(writeJson(body), "{\"version\":1,\"appID\":\"" + std::string(UsageTelemetry::kAppID) +
                                 "\",\"signals\":[{\"name\":\"Updates.checked\",\"time\":\"2026-11-01T12:00:00Z\","
                                 "\"session\":\"" +
                                 session + "\",\"parameters\":{\"pending\":\"2-5\"}}]}");
  EXPECT_FALSE(files.exists(queue)) << "what was taken does not wait";
}

TEST_F(UsageSignalsOverHttpTest, AServerInTroubleIsAskedAgainLaterAndARefusalIsDropped) {
  answer("500 Internal Server Error");
  send("a");
  oneBatch();
  EXPECT_TRUE(files.exists(queue));
  stores.machine.advance(UsageTelemetry::kFirstBackOff / 2);
  send("b");
  stores.machine.advance(1s);
  EXPECT_EQ(http.sent, 1U) << "a new signal does not shorten the wait";
  answer("204 No Content");
  oneRequest(UsageTelemetry::kFirstBackOff * 2);
  EXPECT_THAT(arrived().back(), ElementsAre("a", "b"));
  EXPECT_FALSE(files.exists(queue));

  answer("404 Not Found");
  send("refused");
  oneBatch();
  EXPECT_FALSE(files.exists(queue));
  stores.machine.advance(UsageTelemetry::kLongestBackOff);
  answer("204 No Content");
  send("next");
  oneBatch();
  EXPECT_THAT(arrived(),
              ElementsAre(ElementsAre("a"), ElementsAre("a", "b"), ElementsAre("refused"), ElementsAre("next")));
}

TEST_F(UsageSignalsOverHttpTest, NothingGoesWhileItIsOff) {
  send("waits");
  set(false);
  send("off");
  stores.machine.advance(24h);
  EXPECT_EQ(http.sent, 0U);
  EXPECT_FALSE(files.exists(queue));
  set(true);
  send("on");
  oneBatch();
  EXPECT_THAT(arrived(), ElementsAre(ElementsAre("on")));
}

TEST_F(UsageSignalsOverHttpTest, WhatAnAbsentServerDidNotTakeSurvivesARestart) {
  {
    const testing::WebServer gone;
    pointTo(gone.url("/signals"));
  }
  send("before");
  oneBatch();
  EXPECT_THAT(server.requests(), SizeIs(0));
  launch();
  pointTo(server.url("/signals"));
  send("after");
  oneBatch();
  ASSERT_THAT(arrived(), ElementsAre(ElementsAre("before", "after")));
  const auto body = *parseJson(server.requests().front().body);
  const auto& signals = *body.find("signals")->array();
  EXPECT_NE(signals[0].find("session")->string(), signals[1].find("session")->string());
}

}  // namespace
}  // namespace corvane
