// The command line as a value.
#include "ctl/command.h"

#include <sstream>

#include "support/test.h"

namespace corvane::ctl {
namespace {

// Words apart by blanks; "''" is an empty argument.
Result<Command> parsed(const std::string& line, bool* json = nullptr) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word == "''" ? "" : word);
  const std::vector<std::string_view> arguments(words.begin(), words.end());
  if (json != nullptr) *json = wantsJson(arguments);
  return parseCommand(arguments);
}

std::string kindOf(const Command& command) {
  switch (command.kind) {
    case Command::Kind::help:
      return command.verbGiven ? "help " + std::string(factsOf(command.verb).name) : "help";
    case Command::Kind::version:
      return "version";
    case Command::Kind::run:
      break;
  }
  std::string text(factsOf(command.verb).name);
  if (command.json) text += " json";
  if (command.filter != FilterMode::all) text += " " + std::string(rawName(command.filter));
  if (command.output) text += " to " + *command.output;
  if (!command.labels.empty()) text += " [" + joined(command.labels) + "]";
  return text;
}

TEST(ParseCommand, UnderstandsEachFormWithOptionsAnywhere) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "help"},
      {"-h", "help"},
      {"help", "help"},
      {"help update", "help update"},
      {"update --help", "help update"},
      {"check quill -h", "help check"},
      {"--version", "version"},
      {"--json --version", "version"},
      {"status --json", "status json"},
      {"list --filter alerts", "list alerts"},
      {"list --filter=NEEDSUPDATE --json", "list json needsUpdate"},
      {"list --filter alerts --filter upToDate", "list upToDate"},
      {"check quill --json tern quill", "check json [quill, tern]"},
      {"--filter alerts list --json", "list json alerts"},
      {"--json check quill", "check json [quill]"},
      {"history quill", "history [quill]"},
      {"bundle", "bundle"},
      {"--output x.zip bundle --json", "bundle json to x.zip"},
      {"bundle --output=/var/tmp", "bundle to /var/tmp"},
  };
  for (const auto& [line, expected] : rows) {
    const auto command = parsed(line);
    ASSERT_TRUE(command) << line << ": " << command.error().text;
    EXPECT_EQ(kindOf(*command), expected) << line;
  }
}

TEST(ParseCommand, SaysWhatIsWrongAndWhereHelpIs) {
  const std::pair<const char*, const char*> rows[] = {
      {"lst", "There is no command \"lst\". See corvanectl --help."},
      {"--json", "No command is named. See corvanectl --help."},
      {"--filter", "No command is named. See corvanectl --help."},
      {"--filter list", "No command is named. See corvanectl --help."},
      {"'' list", "There is no command \"\". See corvanectl --help."},
      {"--filter alerts check", "check knows no option --filter. See corvanectl check --help."},
      {"update '' quill", "update takes no empty label. See corvanectl update --help."},
      {"list quill", "list takes no \"quill\". See corvanectl list --help."},
      {"list --filter", "--filter needs one of all, needsUpdate, alerts, upToDate."},
      {"list --filter=", "\"\" is no filter; it is one of all, needsUpdate, alerts, upToDate."},
      {"list --filter --json", "\"--json\" is no filter; it is one of all, needsUpdate, alerts, upToDate."},
      {"update --force", "update knows no option --force. See corvanectl update --help."},
      {"update --all quill", "update takes either --all or labels. See corvanectl update --help."},
      {"defer", "defer needs a number of minutes. See corvanectl defer --help."},
      {"defer -5", "\"-5\" is no number of minutes above 0."},
      {"defer 60 120", "defer takes no \"120\". See corvanectl defer --help."},
      {"validate", "validate needs a file. See corvanectl validate --help."},
      {"validate a b", "validate takes no \"b\". See corvanectl validate --help."},
      {"list -j", "list knows no option -j. See corvanectl list --help."},
  };
  for (const auto& [line, text] : rows) {
    const auto command = parsed(line);
    ASSERT_FALSE(command) << line;
    EXPECT_EQ(command.error().text, text);
    EXPECT_EQ(command.error().code, static_cast<int>(ExitCode::usage));
  }
}

TEST(ParseCommand, UsageErrorsAreObjectsWhereverJsonStands) {
  bool json = false;
  EXPECT_FALSE(parsed("lst quill --json", &json));
  EXPECT_TRUE(json);
  EXPECT_FALSE(parsed("lst", &json));
  EXPECT_FALSE(json);
}

TEST(Help, EveryVerbHasAPageOfItsOwnAndALineInTheOverview) {
  const auto overview = overviewHelp();
  for (const auto& facts : verbs()) {
    EXPECT_TRUE(facts.help.starts_with("Usage: corvanectl " + std::string(facts.name))) << facts.name;
    EXPECT_NE(overview.find("\n  " + std::string(facts.name) + " "), std::string::npos) << facts.name;
    EXPECT_NE(facts.help.find("[--json]"), std::string::npos) << facts.name;
    EXPECT_EQ(facts.help.find("LABEL") != std::string::npos, facts.takesLabels) << facts.name;
    std::istringstream page{std::string(facts.help)};
    for (std::string line; std::getline(page, line);) EXPECT_LE(line.size(), 80U) << line;
  }
}

}  // namespace
}  // namespace corvane::ctl
