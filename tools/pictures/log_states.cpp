#include "pictures/log_states.h"

#include "core/preferences/display_title.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/virtual_time.h"

namespace corvane {
namespace {

struct NoLog final : LogSink {
  void write(LogLevel, std::string_view) override {}
};

std::string someLog(int lines) {
  constexpr const char* kMessages[] = {
      "[INFO] Corvane: Launched version 4.0 (4000); helper status: enabled",
      "[INFO] StatusViewModel: Checking 214 applications for updates",
      "[INFO] DiscoveryPipeline: label=atlas version=12.4.1 outcome=upToDate",
      "[WARNING] The session bus is gone; links cannot reach this instance any more.",
      "[INFO] HelperLifecycle: The root helper answers",
      "[ERROR] PatchRun: Installomator ended with code 2 for label bramble: the download at "
      "https://downloads.example.com/bramble/1.11/Bramble-1.11-universal-signed.dmg could not be checked, since its "
      "Team ID is not the one that the label names; the application stays as it was and is tried again in an hour",
      "[VERBOSE] BackgroundPatchScheduler: Not yet due"};
  std::string text;
  for (int i = 0; i < lines; ++i)
    text += iso8601Utc(VirtualMachine::kStart + i * 7s + 123ms) + " " + kMessages[i % std::size(kMessages)] + "\n";
  return text;
}

using Doing = std::function<void(LogViewModel&, ScriptedFiles&, VirtualMachine&)>;

LogState state(std::string name, const Doing& doing, int chosen = -1) {
  VirtualMachine machine;
  ScriptedFiles files(machine.clock());
  NoLog log;
  const ScriptedLocale locale;
  LogViewModel model({.main = machine.main(),
                      .work = machine.work(),
                      .files = files,
                      .log = log,
                      .systemLog = "/Library/Logs/Corvane/crv.log",
                      .fallbackLog = "/Users/robin/Library/Logs/Corvane/crv.log",
                      .currentWritePath = [] { return std::filesystem::path(); }});
  doing(model, files, machine);
  return {.name = std::move(name),
          .page = makeLogPage(model, locale, PageTexts{AppDisplayTitle("Corvane")}),
          .rows = model.filteredLogs(),
          .chosen = chosen};
}

Doing loaded(int lines, LogEntryLevel level = LogEntryLevel::all, std::string search = {}) {
  return [=](LogViewModel& model, ScriptedFiles& files, VirtualMachine& machine) {
    files.put("/Library/Logs/Corvane/crv.log", someLog(lines));
    model.refresh();
    machine.runUntilIdle();
    model.setLogLevelFilter(level);
    model.setSearchText(search);
    machine.runUntilIdle();
  };
}

}  // namespace

std::vector<LogState> allLogStates() {
  std::vector<LogState> states{state("logs", loaded(420)),
                               state("logs-chosen", loaded(420), 418),
                               state("logs-search", loaded(420, LogEntryLevel::error, "team id")),
                               state("logs-no-match", loaded(420, LogEntryLevel::all, "[a-z]*")),
                               state("logs-cleared",
                                     [](auto& model, auto& files, auto& machine) {
                                       loaded(3)(model, files, machine);
                                       model.clear();
                                     }),
                               state("logs-none",
                                     [](auto& model, auto&, auto& machine) {
                                       model.refresh();
                                       machine.runUntilIdle();
                                     }),
                               state("logs-reading", [](auto& model, auto&, auto&) { model.refresh(); }),
                               state("logs-many", loaded(300'000)),
                               state("logs-small", loaded(420), 417)};
  states.back().width = 640;
  states.back().height = 480;
  const auto light = states;
  for (auto one : light) {
    if (one.name == "logs-many") continue;
    one.name += "-dark";
    one.dark = true;
    states.push_back(std::move(one));
  }
  return states;
}

}  // namespace corvane
