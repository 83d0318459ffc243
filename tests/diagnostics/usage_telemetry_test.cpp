#include "diagnostics/usage_telemetry.h"

#include <memory>

#include "base/plist.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_http_client.h"
#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

const std::string kAddress = "http://127.0.0.1/signals";
const std::filesystem::path kFile = "/u/usage-signals.json";

struct UsageTelemetryTest : ::testing::Test {
  testing::ScriptedPreferences stores;
  VirtualMachine& machine = stores.machine;
  ScriptedFiles files{machine.clock()};
  ScriptedEntropy entropy;
  ScriptedHttpClient http{machine.main()};
  std::unique_ptr<UsageTelemetry> telemetry;

  UsageTelemetryTest() {
    stores.domains.setManaged({{"TelemetryEndpoint", kAddress}});
    answer(200);
  }
  void answer(int status) { http.pages[kAddress] = {.status = status}; }
  void launch(std::string_view appID = UsageTelemetry::kAppID) {
    telemetry = nullptr;
    telemetry = std::make_unique<UsageTelemetry>(UsageTelemetryServices{.main = machine.main(),
                                                                        .clock = machine.clock(),
                                                                        .entropy = entropy,
                                                                        .files = files,
                                                                        .http = http,
                                                                        .preferences = stores.preferences,
                                                                        .notifications = stores.notifications,
                                                                        .log = stores.log,
                                                                        .queueFile = kFile},
                                                 appID);
    telemetry->followSettings();
  }
  void set(bool enabled) {
    stores.preferences.writePreference("TelemetryEnabled", enabled);
    stores.notifications.post(CorvaneSettingsDidChange());
    machine.runUntilIdle();
  }
  void send(const std::string& name) { telemetry->send({.name = name, .parameters = {{"pending", "2-5"}}}); }
  // The names in each request so far.
  [[nodiscard]] std::vector<std::vector<std::string>> sent() const {
    std::vector<std::vector<std::string>> batches;
    for (const auto& request : http.requests()) {
      auto& names = batches.emplace_back();
      const auto body = parseJson(request.body.value_or(""));
      for (const auto& signal : *body->find("signals")->array()) names.emplace_back(*signal.find("name")->string());
    }
    return batches;
  }
};

TEST_F(UsageTelemetryTest, SignalsOfAWhileGoTogetherAndNameNobody) {
  launch();
  send("a");
  send("b");
  EXPECT_THAT(http.requests(), SizeIs(0)) << "nobody waits for it";
  machine.advance(UsageTelemetry::kGatheringTime * 2);
  ASSERT_THAT(sent(), ElementsAre(ElementsAre("a", "b")));
  const auto body = *parseJson(*http.requests().front().body);
  EXPECT_EQ(body.find("version")->integer(), 1);
  EXPECT_EQ(body.find("appID")->string(), "5D1E7A42-90B3-4C6E-A1F8-2B7C3E9D6F10");
  const auto& signal = body.find("signals")->array()->front();
  EXPECT_EQ(signal.find("time")->string(), "2026-11-01T12:00:00Z");
  EXPECT_EQ(signal.find("parameters")->find("pending")->string(), "2-5");
  EXPECT_FALSE(files.exists(kFile));
  machine.advance(24h);
  EXPECT_THAT(http.requests(), SizeIs(1));
}

TEST_F(UsageTelemetryTest, OffKeepsAndSendsNothingAndTheSettingSwitchesAtOnce) {
  stores.preferences.writePreference("TelemetryEnabled", false);
  launch();
  EXPECT_FALSE(telemetry->started());
  send("off");
  EXPECT_FALSE(files.exists(kFile));
  set(true);
  EXPECT_TRUE(telemetry->started());
  send("on");
  EXPECT_TRUE(files.exists(kFile));
  set(false);
  EXPECT_FALSE(telemetry->started());
  EXPECT_FALSE(files.exists(kFile)) << "what waited is dropped";
  machine.advance(24h);
  EXPECT_THAT(http.requests(), SizeIs(0));
}

TEST_F(UsageTelemetryTest, WithoutAnAddressOrAnIdentifierOneLineSaysSo) {
  stores.domains.setManaged({});
  launch();
  for (int i = 0; i < 3; ++i) send("nowhere");
  EXPECT_FALSE(files.exists(kFile));
  EXPECT_EQ(stores.log.count("UsageTelemetry: TelemetryEndpoint is empty"), 1U);
  launch(" \n");
  telemetry->start();
  EXPECT_FALSE(telemetry->started());
  EXPECT_EQ(stores.log.count("UsageTelemetry: TelemetryEnabled is on, but no TelemetryDeck App ID is configured."), 1U);
}

TEST_F(UsageTelemetryTest, AServerInTroubleIsAskedEverMoreSeldomAndLosesNothing) {
  answer(503);
  launch();
  send("a");
  machine.advance(UsageTelemetry::kGatheringTime * 2);
  send("b");
  std::vector<Duration> pauses;
  for (std::size_t asked = http.requests().size(); asked < 14;) {
    const auto before = machine.now();
    while (http.requests().size() == asked) machine.advance(1s);
    pauses.push_back(machine.now() - before);
    asked = http.requests().size();
  }
  for (std::size_t i = 0; i < pauses.size(); ++i) {
    const auto middle = std::min<Duration>(UsageTelemetry::kFirstBackOff * (1 << i), UsageTelemetry::kLongestBackOff);
    EXPECT_GE(pauses[i], middle * 3 / 4 - 21s) << i;  // less what had passed already
    EXPECT_LE(pauses[i], middle * 11 / 8 + 2s) << i;  // with the timer's leeway
  }
  answer(204);
  machine.advance(UsageTelemetry::kLongestBackOff * 2);
  EXPECT_THAT(sent().back(), ElementsAre("a", "b"));
  EXPECT_FALSE(files.exists(kFile));

  answer(400);
  send("refused");
  machine.advance(24h);
  EXPECT_FALSE(files.exists(kFile)) << "what is refused for good does not stand in the way";
}

TEST_F(UsageTelemetryTest, ARestartGoesOnWithWhatWaitsAndTheOldestGoFirstWhenItIsTooMuch) {
  http.pages.clear();
  launch();
  for (std::size_t i = 0; i <= UsageQueue::kMostSignals; ++i) send(std::to_string(i));
  answer(200);
  launch();
  machine.advance(1h);
  const auto batches = sent();
  EXPECT_THAT(batches, SizeIs(UsageQueue::kMostSignals / UsageTelemetry::kMostInABatch));
  EXPECT_EQ(batches.front().front(), "1");
  EXPECT_EQ(batches.back().back(), std::to_string(UsageQueue::kMostSignals));
}

TEST_F(UsageTelemetryTest, AFileThatIsNoneOfOursIsSetAside) {
  for (const auto* bytes : {"{\"version\":1,\"signals\":[{\"na", "{\"version\":2,\"signals\":[]}", "[]", ""}) {
    files.put(kFile, bytes);
    launch();
    send("fresh");
    EXPECT_EQ(files.content("/u/usage-signals.json.damaged"), bytes);
    EXPECT_THAT(files.content(kFile).value_or(""), HasSubstr("fresh"));
    EXPECT_THAT(files.content(kFile).value_or(""), ::testing::Not(HasSubstr("damaged")));
    telemetry->stop();
  }
  files.failPath(kFile, EIO);
  launch();
  send("not kept");
  machine.advance(1min);
  EXPECT_THAT(sent().back(), ElementsAre("not kept"));
}

TEST_F(UsageTelemetryTest, AnAnswerThatComesAfterTheEndFindsNobody) {
  launch();
  send("a");
  http.takes = 5s;
  machine.advance(UsageTelemetry::kGatheringTime + 3s);
  set(false);
  set(true);
  send("b");
  machine.advance(1min);
  EXPECT_THAT(sent(), ElementsAre(ElementsAre("a"), ElementsAre("b")));
}

}  // namespace
}  // namespace corvane
