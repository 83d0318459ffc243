#include "core/client/helper_messages.h"
#include "core/client/xpc_service_client.h"
#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

void checkLabels(const Labels& labels) {
  EXPECT_LE(labels.size(), kHelperLabelsLimit);
  for (const auto& label : labels) {
    EXPECT_FALSE(label.text.empty());
    EXPECT_LE(label.text.size(), kHelperLabelLengthLimit);
    EXPECT_EQ(label.text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-"),
              std::string::npos)
        << label.text;
  }
}

bool taken(const std::string& bytes) {
  const auto request = parseRequest(bytes);
  if (!request) {
    EXPECT_EQ(request.error().error.domain, XPCError::domain);
    EXPECT_FALSE(request.error().error.text.empty());
    EXPECT_LE(request.error().id.size(), kHelperIdLengthLimit);
    const auto answer = parseAnswer(composeRefusal(request.error().id, request.error().error), "some id");
    if (request.error().id.empty()) {
      EXPECT_EQ(answer.error().code, request.error().error.code);
    }
    return false;
  }
  EXPECT_LE(request->id.size(), kHelperIdLengthLimit);
  if (const auto* scoped = std::get_if<ask::DiscoverForLabels>(&request->question)) checkLabels(scoped->labels);
  if (const auto* patching = std::get_if<ask::StartPatching>(&request->question)) {
    checkLabels(patching->labels);
    checkLabels(patching->alsoStageLabels);
  }
  const auto again = parseRequest(composeRequest(*request));
  EXPECT_TRUE(again && *again == *request);
  return true;
}

}  // namespace

TEST(HelperMessageFuzz, theCorpusIsJudgedRightly) { replay(corpusOf("request"), taken); }

TEST(HelperMessageFuzz, damagedRequestsNeverCrashAndNoForbiddenLabelPasses) {
  bombard(
      HostileInputs(goodOnes(corpusOf("request")),
                    wordsIn(R"("labels":[ "alsoStageLabels":[] "includeLatestVersions":true "version":1 "op":"status")"
                            R"( "id":" null 1e0 -1 , { } [ ] " \u0000 $(id) ../ ')"
                            " \xff")),
      6000, 50, taken);
}

TEST(HelperMessageFuzz, damagedAnswersNeverCrash) {
  const HostileInputs inputs(corpusOf("answer"),
                             {"\"result\":{}", "\"error\":{", "\"code\":1", "null", "1e400", "[]", "{}", "1", "-0.5",
                              "true", "9223372036854775807", "\"\"", "\"a\"", "\xff"});
  bombard(inputs, 6000, 50, [](const std::string& bytes) {
    const auto answer = parseAnswer(bytes, "7");
    EXPECT_TRUE(answer || !answer.error().domain.empty());
    return answer && (statusInfoFromJson(*answer) || patchRunAnswerFromJson(*answer) || patchProgressFromJson(*answer));
  });
}

}  // namespace corvane::testing
