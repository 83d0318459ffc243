#include "core/preferences/options_codec.h"
#include "fuzz/hostile_inputs.h"

namespace corvane::testing {

namespace {

// The text that a shell makes of one quoted word; absent for a word that does more than be a text.
std::optional<std::string> textOf(std::string_view word) {
  std::string text;
  bool quoted = false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i] == '\'') {
      quoted = !quoted;
    } else if (quoted) {
      text += word[i];
    } else if (word.substr(i).starts_with("\\'")) {
      text += '\'';
      ++i;
    } else {
      return std::nullopt;
    }
  }
  return quoted ? std::nullopt : std::optional(text);
}

void checkArguments(const std::string& options, OptionsSource source) {
  const auto built = optionArguments(options, source);
  for (const auto& argument : built.arguments) {
    const auto equals = argument.find('=');
    ASSERT_NE(equals, std::string::npos);
    const auto key = argument.substr(0, equals);
    EXPECT_EQ(key.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"),
              std::string::npos);
    EXPECT_EQ(textOf(std::string_view(argument).substr(equals + 1)), optionValue(options, key)) << argument;
  }
  for (const auto& left : built.leftOut) EXPECT_FALSE(left.reason.empty()) << left.key;
}

void check(const std::string& options) {
  const auto parsed = parseInstallomatorOptions(options);
  const auto composed = composeInstallomatorOptions(parsed);
  EXPECT_EQ(composeInstallomatorOptions(parseInstallomatorOptions(composed)), composed);
  EXPECT_EQ(parseInstallomatorOptions(composed).unknown, parsed.unknown) << "what is not understood survives";
  checkArguments(options, OptionsSource::managed);
  checkArguments(options, OptionsSource::user);
}

}  // namespace

TEST(OptionsFuzz, whateverIsWrittenIsQuotedAndSurvives) {
  const auto corpus = corpusOf("options");
  for (const auto& [name, options] : corpus) {
    SCOPED_TRACE(name);
    check(options);
  }
  auto words = wordsIn(R"(NOTIFY= LOGO=/ PROMPT_TIMEOUT= SYSTEMOWNER= ' \' " `id` $(id) = ; & -1 99999999999999999999)"
                       " a[$(id)] \xc2\xa0 \xff");
  words.insert(words.end(), {" ", "\t", "\n", std::string(1, '\0')});
  HostileInputs inputs(corpus, std::move(words));
  for (int i = 0; i < 400; ++i) check(inputs.next());
}

}  // namespace corvane::testing
