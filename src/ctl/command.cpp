#include "ctl/command.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace corvane::ctl {
namespace {

constexpr auto kVerbs = std::to_array<VerbFacts>({
    {Verb::status, "status", false, false,
     "Usage: corvanectl status [--json]\n\n"
     "Shows the counts, the last discovery and check, the state of the helper and of\n"
     "Installomator, the deadline, and what the dashboard's status line says.\n"
     "Reads what is stored; asks the helper for nothing.\n"},
    {Verb::list, "list", false, false,
     "Usage: corvanectl list [--filter all|needsUpdate|alerts|upToDate] [--json]\n\n"
     "Lists the known applications with their installed and latest versions.\n"
     "Reads what is stored; `discover` and `check` bring it up to date.\n\n"
     "  --filter MODE   all (default), needsUpdate, alerts or upToDate\n"},
    {Verb::discover, "discover", false, true,
     "Usage: corvanectl discover [--json]\n\n"
     "Looks for installed applications that a label matches, then checks them for\n"
     "updates. Without the helper, applications are scanned directly and no latest\n"
     "versions are known; it ends with 4 then, and with 1 without Installomator.\n"},
    {Verb::check, "check", true, true,
     "Usage: corvanectl check [LABEL...] [--json]\n\n"
     "Asks for the latest versions of all known applications, or of those named; the\n"
     "first time of all it looks for applications. Fails when the helper cannot be\n"
     "reached, and when a label named is not answered for.\n"},
    {Verb::update, "update", true, true,
     "Usage: corvanectl update [--all | LABEL...] [--json]\n\n"
     "Updates the applications named, or all that have an update pending and are not\n"
     "set aside until the next cycle. Fails when one of them fails, and when it cannot\n"
     "tell because nothing is pending and applications were never checked.\n\n"
     "  --all   decide as the window's Update All does: check what is pending, then\n"
     "          install it where no question is due, else say what would be asked\n"},
    {Verb::defer, "defer", false, true,
     "Usage: corvanectl defer MINUTES [--json]\n\n"
     "Puts the pending updates off, as the prompt does: only for a length on offer and\n"
     "within the limits. A refusal says which limit and until when.\n"},
    {Verb::deadline, "deadline", false, false,
     "Usage: corvanectl deadline [--json]\n\n"
     "Shows the limits of deferrals, what is used of them, what is armed next and\n"
     "which lengths are on offer. Reads what is stored.\n"},
    {Verb::explain, "explain", true, false,
     "Usage: corvanectl explain [LABEL...] [--json]\n\n"
     "Tells in the order of the rules why an application is pending, held, waiting,\n"
     "ignored or up to date, which key decided and where its value comes from\n"
     "(managed, user or default), why there is or is no prompt now, and what happens\n"
     "next and when. Without a label: the same of cycle, deadline, deferrals, focus,\n"
     "business hours and the background pass. Reads what is stored; fails for a label\n"
     "under which no application is known.\n"},
    {Verb::history, "history", true, false,
     "Usage: corvanectl history [LABEL...] [--json]\n\n"
     "Lists finished patch runs, newest first, of all applications or of those named.\n"},
    {Verb::settings, "settings", false, false,
     "Usage: corvanectl settings [--json]\n\n"
     "Lists every preference key with its value in force and where it comes from:\n"
     "managed, user or default. Secrets are shown as \"(hidden)\".\n"},
    {Verb::bundle, "bundle", false, false,
     "Usage: corvanectl bundle [--output PATH] [--json]\n\n"
     "Writes a zip for a request for support and prints its path: a summary, logs,\n"
     "crash reports, preferences with the addresses of webhooks blacked out, the\n"
     "helper's state, the latest receipts and deferral events. A GitHub token in the\n"
     "preferences stays in it, so only its owner may read the zip. Works beside the\n"
     "application and without the helper.\n\n"
     "  --output PATH   a folder, or the zip itself where it ends in .zip, which is\n"
     "                  replaced; /var/tmp without it\n"},
    {Verb::validate, "validate", false, false,
     "Usage: corvanectl validate FILE [--json]\n\n"
     "Checks settings before they are deployed. FILE is a property list of settings or\n"
     "a configuration profile (.mobileconfig), signed or not; who signed it is not\n"
     "looked at. Finds unknown keys, values that do not count and combinations that\n"
     "cannot work, each with its reason and its fix. Labels are looked up where this\n"
     "machine has a catalogue. Values of secret settings are never shown.\n"
     "Ends with 0 when there is no error, warnings or not; with 1 when there is one or\n"
     "the file cannot be read; and with 2 when no file is named.\n"},
});

std::unexpected<Error> usage(std::string text) {
  return failure("CRVUsage", static_cast<int>(ExitCode::usage), std::move(text));
}

const VerbFacts* findVerb(std::string_view name) {
  const auto found = std::ranges::find(kVerbs, name, &VerbFacts::name);
  return found == kVerbs.end() ? nullptr : found;
}

constexpr std::string_view kFilters = "all, needsUpdate, alerts, upToDate";
constexpr std::string_view kFilterOption = "--filter";

constexpr std::string_view kOutputOption = "--output";

bool isOutput(std::string_view argument) { return argument == kOutputOption || argument.starts_with("--output="); }

bool isFilter(std::string_view argument) { return argument == kFilterOption || argument.starts_with("--filter="); }

// A whole number above 0.
std::optional<std::int64_t> parsedMinutes(std::string_view text) {
  std::int64_t minutes = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), minutes);
  if (error != std::errc() || end != text.data() + text.size() || minutes < 1) return std::nullopt;
  return minutes;
}

// Where the verb stands; what follows a bare --filter or --output is its value.
std::size_t firstThatIsNoOption(std::span<const std::string_view> arguments) {
  std::size_t at = 0;
  while (at < arguments.size() && arguments[at].starts_with("-"))
    at += arguments[at] == kFilterOption || arguments[at] == kOutputOption ? 2 : 1;
  return std::min(at, arguments.size());
}

}  // namespace

std::span<const VerbFacts> verbs() { return kVerbs; }

const VerbFacts& factsOf(Verb verb) { return *std::ranges::find(kVerbs, verb, &VerbFacts::verb); }

bool wantsJson(std::span<const std::string_view> arguments) {
  return std::ranges::find(arguments, "--json") != arguments.end();
}

Result<Command> parseCommand(std::span<const std::string_view> arguments) {
  Command command{.json = wantsJson(arguments)};
  const auto unknownVerb = [](std::string_view name) {
    return usage(fmt::format("There is no command \"{}\". See corvanectl --help.", name));
  };
  const auto has = [&](std::string_view a, std::string_view b) {
    return std::ranges::any_of(arguments, [&](auto argument) { return argument == a || argument == b; });
  };
  const auto verb = firstThatIsNoOption(arguments);
  const auto* named = verb < arguments.size() ? findVerb(arguments[verb]) : nullptr;
  const bool asksForHelp = verb < arguments.size() && arguments[verb] == "help";
  if (asksForHelp && verb + 1 < arguments.size()) {
    named = findVerb(arguments[verb + 1]);
    if (named == nullptr) return unknownVerb(arguments[verb + 1]);
  }
  if (named != nullptr) {
    command.verb = named->verb;
    command.verbGiven = true;
  }
  if (arguments.empty() || has("--help", "-h") || asksForHelp) {
    command.kind = Command::Kind::help;
    return command;
  }
  if (has("--version", "--version")) {
    command.kind = Command::Kind::version;
    return command;
  }
  if (verb == arguments.size()) return usage("No command is named. See corvanectl --help.");
  if (named == nullptr) return unknownVerb(arguments[verb]);

  const auto& facts = *named;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string_view argument = arguments[i];
    if (i == verb) continue;
    if (argument == "--json") continue;
    if (command.verb == Verb::list && isFilter(argument)) {
      if (argument == kFilterOption) {
        if (++i == arguments.size()) return usage(fmt::format("--filter needs one of {}.", kFilters));
        argument = arguments[i];
      } else {
        argument.remove_prefix(kFilterOption.size() + 1);
      }
      const auto mode = caseFromRaw<FilterMode>(argument);
      if (!mode) return usage(fmt::format("\"{}\" is no filter; it is one of {}.", argument, kFilters));
      command.filter = *mode;
    } else if (command.verb == Verb::bundle && isOutput(argument)) {
      if (argument != kOutputOption)
        argument.remove_prefix(kOutputOption.size() + 1);
      else
        argument = ++i == arguments.size() ? std::string_view() : arguments[i];
      if (argument.empty() || argument.starts_with("--"))
        return usage("--output needs a path. See corvanectl bundle --help.");
      command.output = argument;
    } else if (command.verb == Verb::update && argument == "--all") {
      command.all = true;
    } else if (command.verb == Verb::defer && !argument.starts_with("--") && command.minutes == 0) {
      const auto minutes = parsedMinutes(argument);
      if (!minutes) return usage(fmt::format("\"{}\" is no number of minutes above 0.", argument));
      command.minutes = *minutes;
    } else if (command.verb == Verb::validate && !argument.starts_with("-") && command.file.empty()) {
      if (argument.empty()) return usage("validate takes no empty file name. See corvanectl validate --help.");
      command.file = argument;
    } else if (argument.starts_with("-")) {
      return usage(fmt::format("{} knows no option {}. See corvanectl {} --help.", facts.name, argument, facts.name));
    } else if (!facts.takesLabels) {
      return usage(fmt::format("{} takes no \"{}\". See corvanectl {} --help.", facts.name, argument, facts.name));
    } else if (argument.empty()) {
      // Left out, it would turn a script's empty variable into an order for every application.
      return usage(fmt::format("{} takes no empty label. See corvanectl {} --help.", facts.name, facts.name));
    } else {
      command.labels.emplace_back(std::string(argument));
    }
  }
  if (command.all && !command.labels.empty())
    return usage("update takes either --all or labels. See corvanectl update --help.");
  if (command.verb == Verb::defer && command.minutes == 0)
    return usage("defer needs a number of minutes. See corvanectl defer --help.");
  if (command.verb == Verb::validate && command.file.empty())
    return usage("validate needs a file. See corvanectl validate --help.");
  command.labels = withoutDuplicates(command.labels);
  return command;
}

std::string overviewHelp() {
  return "Usage: corvanectl COMMAND [LABEL...] [--json]\n\n"
         "  status      counts, dates, helper, deadline\n"
         "  list        known applications and their versions\n"
         "  discover    look for installed applications\n"
         "  check       ask for latest versions\n"
         "  update      install updates\n"
         "  defer       put pending updates off\n"
         "  deadline    limits of deferrals, and what is armed next\n"
         "  explain     why an application is where it is, and what comes next\n"
         "  history     finished patch runs\n"
         "  settings    every preference key, its value and where it comes from\n"
         "  bundle      write a zip for a request for support\n"
         "  validate    check a profile or property list of settings\n\n"
         "  --json      one JSON object on stdout, errors included\n"
         "  --version   the program's version\n"
         "  --help      this page, or with a command its own\n\n"
         "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 the application or another\n"
         "corvanectl owns the state, 4 the helper is out of reach.\n";
}

}  // namespace corvane::ctl
