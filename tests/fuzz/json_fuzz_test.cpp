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
    EXPECT_TRUE(again) << text;
    if (again) {
      EXPECT_EQ(*again, *value) << text;
    }
  }
  EXPECT_EQ(writeJson(*value).find('\n'), std::string::npos) << "one line";
  return true;
}

}  // namespace

TEST(JsonFuzz, theCorpusIsJudgedRightly) { replay(corpusOf("json"), taken); }

TEST(JsonFuzz, damageNeverCrashesAndWhatIsReadCanBeWritten) {
  HostileInputs inputs(corpusOf("json"), {"{",
                                          "}",
                                          "[",
                                          "]",
                                          ":",
                                          ",",
                                          "\"",
                                          "\\u0000",
                                          "\\ud800",
                                          "\\udc00",
                                          "\\\"",
                                          "null",
                                          "true",
                                          "-0",
                                          "1e308",
                                          "1e-400",
                                          "9223372036854775808",
                                          "-9223372036854775809",
                                          "0.1e+1",
                                          "\xc0\x80",
                                          "\xed\xa0\x80",
                                          "\xf4\x90\x80\x80",
                                          "\xef\xbb\xbf",
                                          "//",
                                          "NaN"});
  std::size_t read = 0;
  for (int i = 0; i < 4000; ++i) read += taken(inputs.next()) ? 1 : 0;
  EXPECT_GT(read, 100U) << "some damage goes deep: " << read;
}

TEST(JsonFuzz, nestingIsBounded) {
  const auto nested = [](std::size_t levels, const std::string& open, const std::string& close) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) text += open;
    text += "1";
    for (std::size_t i = 0; i < levels; ++i) text += close;
    return text;
  };
  EXPECT_TRUE(taken(nested(256, "[", "]")));
  for (const auto levels : {std::size_t{257}, std::size_t{200000}}) {
    EXPECT_FALSE(taken(nested(levels, "[", "]"))) << levels;
    EXPECT_FALSE(taken(nested(levels, "[", ""))) << levels;
    EXPECT_FALSE(taken(nested(levels, "{\"a\":", "}"))) << levels;
  }
}

}  // namespace corvane::testing
