#include "ctl/command_documents.h"

#include <fmt/format.h>

#include <sstream>
#include <vector>

#include "base/ascii.h"
#include "base/manual_page.h"
#include "core/places.h"
#include "ctl/command.h"

namespace corvane::ctl {
namespace {

// An option as a command's usage names it, with the values that it names behind it: "[--filter all|alerts]".
struct Option {
  std::string name;
  std::string values;  // apart by blanks
};

std::string usageOf(const VerbFacts& facts) { return std::string(facts.help.substr(0, facts.help.find("\n\n"))); }

std::vector<Option> optionsOf(const VerbFacts& facts) {
  auto usage = usageOf(facts);
  for (char& c : usage)
    if (c == '[' || c == ']') c = ' ';
  std::vector<Option> options;
  std::istringstream words(usage);
  for (std::string word; words >> word;) {
    if (word.starts_with("--")) {
      options.push_back({.name = word});
    } else if (!options.empty() && word.find('|') != std::string::npos && word != "|") {
      for (char& c : word)
        if (c == '|') c = ' ';
      options.back().values = word;
    }
  }
  return options;
}

bool takesFile(const VerbFacts& facts) {
  const auto usage = usageOf(facts);
  for (const auto* word : {"FILE", "FOLDER", "PATH"})
    if (usage.find(word) != std::string::npos) return true;
  return false;
}

// The line that the overview has on a verb.
std::string summaryOf(const VerbFacts& facts) {
  const auto overview = overviewHelp();
  const auto at = overview.find(fmt::format("\n  {} ", facts.name));
  if (at == std::string::npos) return {};
  const auto start = at + 4 + facts.name.size();
  return std::string(trimmed(overview.substr(start, overview.find('\n', start) - start)));
}

constexpr std::string_view kMade = "made from the commands of corvanectl by `make docs`";
// Labels stand in the first column, under their head.
constexpr std::string_view kLabels = "corvanectl list 2>/dev/null | awk 'NR > 1 { print $1 }'";

}  // namespace

std::string manualPage() {
  const CorvaneConstants places{.root = "/", .home = "~"};
  const ManualPage::Entry files[] = {
      {places.userPreferencesPath(), "The user's settings and state."},
      {places.managedPreferencesPath(), "What a configuration profile sets."},
  };
  ManualPage page("corvanectl", 1, "keep the applications on a Mac up to date", kMade);
  page.heading("SYNOPSIS").paragraph("corvanectl COMMAND [LABEL...] [--json]");
  page.heading("OVERVIEW").verbatim(overviewHelp()).heading("COMMANDS");
  for (const auto& facts : verbs()) page.subheading(facts.name).verbatim(facts.help);
  page.heading("FILES").entries(files);
  page.heading("SEE ALSO").paragraph("Corvane(1), CorvaneRootHelper(8)");
  return page.text();
}

std::string bashCompletion() {
  std::string names;
  std::string cases;
  for (const auto& facts : verbs()) {
    names += (names.empty() ? "" : " ") + std::string(facts.name);
    std::string options = "--help";
    std::string values;
    for (const auto& option : optionsOf(facts)) {
      options += " " + option.name;
      if (!option.values.empty())
        values += fmt::format("      [[ $previous == {} ]] && words='{}'\n", option.name, option.values);
    }
    cases += fmt::format("    {})\n      words='{}'\n", facts.name, options);
    if (facts.takesLabels) cases += fmt::format("      [[ $word != -* ]] && words+=\" $({})\"\n", kLabels);
    if (takesFile(facts)) cases += "      [[ $word != -* ]] && COMPREPLY=($(compgen -f -- \"$word\"))\n";
    cases += values + "      ;;\n";
  }
  return fmt::format(
      "# bash completion, {}\n_corvanectl() {{\n  local word=${{COMP_WORDS[COMP_CWORD]}} "
      "previous=${{COMP_WORDS[COMP_CWORD-1]}} words=\n  COMPREPLY=()\n  case ${{COMP_WORDS[1]}} in\n{}  esac\n"
      "  [[ $COMP_CWORD -eq 1 ]] && words='{} help --help --version'\n"
      "  COMPREPLY+=($(compgen -W \"$words\" -- \"$word\"))\n}}\ncomplete -F _corvanectl corvanectl\n",
      kMade, cases, names);
}

std::string zshCompletion() {
  std::string names;
  std::string cases;
  for (const auto& facts : verbs()) {
    names += fmt::format("    '{}:{}'\n", facts.name, summaryOf(facts));
    cases += fmt::format("    {}) _arguments '--help[show help]'", facts.name);
    for (const auto& option : optionsOf(facts))
      cases += option.values.empty() ? fmt::format(" '{}'", option.name)
                                     : fmt::format(" '{}:value:({})'", option.name, option.values);
    if (facts.takesLabels) cases += " '*:label:_corvanectl_labels'";
    if (takesFile(facts)) cases += " '*:file:_files'";
    cases += " ;;\n";
  }
  return fmt::format(
      "#compdef corvanectl\n# {}\n_corvanectl_labels() {{\n  compadd -- ${{(f)\"$({})\"}}\n}}\n\n_corvanectl() {{\n"
      "  local -a commands=(\n{}  )\n  if (( CURRENT == 2 )); then\n    _describe command commands\n    return\n  fi\n"
      "  local command=$words[2]\n  shift words\n  (( CURRENT-- ))\n  case $command in\n{}  esac\n}}\n\n_corvanectl "
      "\"$@\"\n",
      kMade, kLabels, names, cases);
}

}  // namespace corvane::ctl
