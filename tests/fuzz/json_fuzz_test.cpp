#include "base/json.h"
#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

bool taken(const std::string& bytes) {
  const auto value = parseJson(bytes);
  if (!value) {
    EXPECT_FALSE(value.error().text.empty());
    return false;
  }
  for (const auto& text : {writeJson(*value), writeJsonPretty(*value)}) {
    const auto again = parseJson(text);
    EXPECT_TRUE(again && *again == *value) << text;
  }
  EXPECT_EQ(writeJson(*value).find('\n'), std::string::npos) << "one line";
  return true;
}

}  // namespace

TEST(JsonFuzz, theCorpusIsJudgedRightly) { replay(corpusOf("json"), taken); }

TEST(JsonFuzz, damageNeverCrashesAndWhatIsReadCanBeWritten) {
  const HostileInputs inputs(
      corpusOf("json"),
      wordsIn(R"({ } [ ] : , " \u0000 \ud800 \udc00 \" null true -0 1e308 1e-400 9223372036854775808)"
              " -9223372036854775809 0.1e+1 // NaN \xc0\x80 \xed\xa0\x80 \xf4\x90\x80\x80 \xef\xbb\xbf"));
  bombard(inputs, 4000, 100, taken);
}

}  // namespace corvane::testing
