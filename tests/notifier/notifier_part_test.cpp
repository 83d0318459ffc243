#include "notifier/notifier_part.h"

#include "support/test.h"

namespace corvane {
namespace {

// Others come and go as told: each round says whether the claim holds, and what becomes of a message.
struct ScriptedSoleProcess final : SoleProcess {
  struct Round {
    Result<bool> claim;
    std::optional<int> failure = {};
  };
  std::vector<Round> rounds;
  std::vector<std::string> given;
  std::size_t at = 0;

  Result<bool> claim() override { return rounds.at(at).claim; }
  Status handOver(const std::string& message) override {
    given.push_back(message);
    const auto code = rounds.at(at++).failure;
    return code ? Status(failure(SoleProcessError::domain, *code, "trouble")) : Status();
  }
  void listen(std::function<Status(const std::string&)>, Task) override {}
  void leave() override {}
};

TEST(NotifierPart, theFirstActsAndOthersHandOver) {
  ScriptedSoleProcess sole;
  sole.rounds = {{.claim = true}};
  EXPECT_EQ(takePart(sole, "abc"), NotifierPart::acts);
  sole.rounds = {{.claim = false}};
  EXPECT_EQ(takePart(sole, "abc"), NotifierPart::handedOver);
  EXPECT_THAT(sole.given, ElementsAre("abc"));
}

TEST(NotifierPart, oneThatEndsMeanwhileIsReplaced) {
  ScriptedSoleProcess sole;
  const ScriptedSoleProcess::Round ending{.claim = false, .failure = SoleProcessError::nobody};
  sole.rounds = {ending, ending, {.claim = true}};
  EXPECT_EQ(takePart(sole, "abc"), NotifierPart::acts);
  sole = {};
  sole.rounds = std::vector(100, ending);
  EXPECT_FALSE(takePart(sole, "abc"));
  EXPECT_LT(sole.at, 10U);
}

TEST(NotifierPart, whatCannotBeHandedOverIsAnError) {
  ScriptedSoleProcess sole;
  for (const int code : {SoleProcessError::silent, SoleProcessError::refused, SoleProcessError::noSession}) {
    sole = {};
    sole.rounds = {{.claim = false, .failure = code}};
    EXPECT_EQ(takePart(sole, "abc").error().code, code);
  }
  sole = {};
  sole.rounds = {{.claim = failure(SoleProcessError::domain, SoleProcessError::noSession, "There is no bus.")}};
  EXPECT_EQ(takePart(sole, "abc").error().text, "There is no bus.");
}

}  // namespace
}  // namespace corvane
