// The command line of corvanectl as a value.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/error.h"
#include "core/records/app_info.h"
#include "workflow/status_fields.h"

namespace corvane::ctl {

enum class Verb {
  status,
  list,
  discover,
  check,
  update,
  defer,
  deadline,
  explain,
  history,
  settings,
  bundle,
  validate
};

// What the process ends with.
enum class ExitCode { done = 0, failed = 1, usage = 2, applicationRuns = 3, helperOutOfReach = 4 };

struct VerbFacts {
  Verb verb;
  std::string_view name;
  bool takesLabels;
  bool writes;            // changes state that the application owns while it runs
  std::string_view help;  // the whole page
};

// All verbs in the order of the help.
[[nodiscard]] std::span<const VerbFacts> verbs();
[[nodiscard]] const VerbFacts& factsOf(Verb verb);

struct Command {
  enum class Kind { help, version, run };
  Kind kind = Kind::run;
  Verb verb = Verb::status;
  bool verbGiven = false;  // of `--help`: a page for `verb`, else the overview
  bool json = false;
  FilterMode filter = FilterMode::all;
  bool all = false;          // of `update`: the decision of Update All
  std::int64_t minutes = 0;  // of `defer`
  Labels labels;
  std::optional<std::string> output;  // of `bundle`: a folder, or the zip itself
  std::string file;                   // of `validate`
};

// `arguments` without the program's name. The verb is the first that is no option; options may stand anywhere. A
// usage error's text says what is wrong and where help is.
[[nodiscard]] Result<Command> parseCommand(std::span<const std::string_view> arguments);

// Whether `--json` stands among them, so that usage errors are objects too.
[[nodiscard]] bool wantsJson(std::span<const std::string_view> arguments);

[[nodiscard]] std::string overviewHelp();

}  // namespace corvane::ctl
