#include <fmt/format.h>

#include "core/client/helper_service_client.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_helper_channel.h"
#include "platform/scripted/virtual_time.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(HelperMessages, AnAnswerOfAnotherRequestOrVersionIsNoAnswer) {
  EXPECT_TRUE(parseAnswer(composeAnswer("a", true), "a"));
  EXPECT_FALSE(parseAnswer(composeAnswer("a", true), "b"));
  EXPECT_FALSE(parseAnswer("{}", "a"));
  EXPECT_FALSE(parseAnswer(R"({"version":1,"id":"a"})", "a"));
  EXPECT_TRUE(
      isHelperError(parseAnswer(R"({"version":2,"id":"a","result":1})", "a").error(), HelperErrorCode::version));
  const auto busy = helperError(HelperErrorCode::busy, "wait");
  EXPECT_EQ(parseAnswer(composeRefusal("", busy), "a").error(), busy) << "refused before its id could be read";
  for (const auto* damaged : {R"("domain":"","code":1)", R"("domain":"CRVHelper","code":4294967303)"}) {
    const auto answer = fmt::format(R"({{"version":1,"id":"a","error":{{{},"text":"t"}}}})", damaged);
    EXPECT_FALSE(parseAnswer(answer, "a").error().domain.empty()) << damaged;
    EXPECT_FALSE(isHelperError(parseAnswer(answer, "a").error(), HelperErrorCode::busy)) << "wrapped to a known code";
  }
}

TEST(HelperServiceClient, AQuestionMayBeOpenWhenTheProgramEnds) {
  VirtualMachine machine;
  ScriptedEntropy entropy;
  int answers = 0;
  {
    ScriptedHelperChannel channel(machine.main(), [](const std::string&) { return ScriptedAnswer{.body = {}}; });
    HelperServiceClient client(channel, entropy);
    client.getStatus([&](const auto&) { ++answers; });
    client.getPatchingProgress([&](const auto&) { ++answers; });
    machine.runUntilIdle();
    EXPECT_EQ(channel.requests().size(), 2U);
  }
  machine.runUntilIdle();
  EXPECT_EQ(answers, 0);
}

TEST(HelperServiceClient, DeliversAnswersErrorsAndIdleProgressWhenOutOfReach) {
  VirtualMachine machine;
  ScriptedEntropy entropy;
  ScriptedHelperChannel channel(machine.main());
  HelperServiceClient client(channel, entropy);
  std::optional<PatchProgressInfo> progress;
  client.getPatchingProgress([&](PatchProgressInfo info) { progress = info; });
  std::optional<Result<PatchRunAnswer>> run;
  client.startPatching({Label("a")}, {}, [&](Result<PatchRunAnswer> answer) { run = std::move(answer); });
  EXPECT_FALSE(progress) << "never inline";
  machine.runUntilIdle();
  EXPECT_EQ(progress, PatchProgressInfo{});
  EXPECT_EQ(run->error().domain, scriptedUnreachable().domain);

  channel.setHandler([](const std::string& body) {
    const auto request = parseRequest(body).value();
    if (std::holds_alternative<ask::StartPatching>(request.question))
      return ScriptedAnswer{.body = composeAnswer(request.id, toJson(PatchRunAnswer{true, "Updated 1 of 1.", 1}))};
    return ScriptedAnswer{.body = composeRefusal(request.id, Error{"CRVHelper", 1, "no labels"})};
  });
  std::optional<Result<Apps>> apps;
  client.startPatching({Label("a")}, {}, [&](Result<PatchRunAnswer> answer) { run = std::move(answer); });
  client.discoverAppsWithUpdates([&](Result<Apps> answer) { apps = std::move(answer); });
  machine.runUntilIdle();
  EXPECT_EQ(run->value(), (PatchRunAnswer{true, "Updated 1 of 1.", 1}));
  EXPECT_TRUE(XPCError::isDiscoveryFailed(apps->error()));
}

}  // namespace
}  // namespace corvane
