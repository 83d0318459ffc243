#include "ctl/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "core/preferences/display_title.h"
#include "ctl/report.h"
#include "workflow/app_predicates.h"
#include "workflow/status_texts.h"

namespace corvane::ctl {
namespace {

constexpr Duration kNoLimit = std::chrono::hours(24 * 365);

Error ctlError(ExitCode code, std::string text) {
  return {.domain = "CRVCtl", .code = static_cast<int>(code), .text = std::move(text)};
}

void print(const Command& command, const World& world, const JsonValue& json, std::string_view text) {
  world.out(command.json ? writeJson(json) + "\n" : std::string(text));
}

// Waits until the model rests, showing what it says meanwhile.
void waitUntilIdle(const World& world) {
  std::string shown;
  const auto show = [&] {
    const auto& message = world.model.fields().messages.statusMessage;
    if (!world.progress || !message || *message == shown) return;
    shown = *message;
    world.progress(shown);
  };
  show();
  world.pump(
      [&] {
        show();
        return world.model.isIdle();
      },
      kNoLimit);
  if (world.progress) world.progress("");
}

// Starts the helper when it does not run, and asks it once: a heartbeat outlives the helper by a minute, an
// answer does not.
Status reachHelper(const World& world) {
  std::optional<Status> answer;
  world.helperStart.ensureRunning([&](Status status) { answer = std::move(status); });
  world.pump([&] { return answer.has_value(); }, kNoLimit);
  if (!*answer) return *answer;
  answer.reset();
  world.helper.getStatus(
      [&](const Result<StatusInfo>& status) { answer = status ? Status() : Status(std::unexpected(status.error())); });
  world.pump([&] { return answer.has_value(); }, kNoLimit);
  return *answer;
}

std::optional<Error> claim(const World& world) {
  const auto attempt = world.lock.take();
  switch (attempt.outcome) {
    case SessionLock::Outcome::heldByOther:
      return ctlError(ExitCode::applicationRuns,
                      AppDisplayTitle(world.preferences.loadConfiguration())
                          .userFacing("Corvane or another corvanectl is at work and owns the state. Do this in the "
                                      "window, or quit it and try again."));
    case SessionLock::Outcome::couldNotMakeFolder:
    case SessionLock::Outcome::couldNotOpen:
      world.err(fmt::format("corvanectl: the session could not be claimed ({}); continuing\n", attempt.error));
      break;
    case SessionLock::Outcome::taken:
      break;
  }
  return std::nullopt;
}

std::optional<Error> modelError(const World& world) {
  if (const auto& message = world.model.fields().messages.errorMessage) return ctlError(ExitCode::failed, *message);
  return std::nullopt;
}

// What the model says last, and the applications concerned; what went wrong stands beside them.
ExitCode finish(const Command& command, const World& world, const Apps& apps, ExitCode whenFailed) {
  const auto error = modelError(world);
  if (error && apps.empty()) return tellError(*error, command.json, whenFailed, world);
  const auto facts = world.model.facts();
  auto json = *appsJson(apps, facts).object();
  const auto& message = world.model.fields().messages.statusMessage;
  if (message) json.set("message", *message);
  if (error) {
    json.set("error", *errorJson(*error).find("error"));
    if (!command.json) tellError(*error, false, whenFailed, world);
  }
  print(command, world, json,
        (message ? *message + "\n\n" : std::string()) + (apps.empty() ? "" : appsText(apps, facts)));
  return error ? whenFailed : ExitCode::done;
}

Apps appsWithLabels(const World& world, const Labels& labels) {
  Apps apps;
  for (const auto& app : world.model.fields().inventory.apps)
    if (std::ranges::find(labels, app.label) != labels.end()) apps.push_back(app);
  return apps;
}

std::optional<Error> unknownLabels(const World& world, const Labels& labels) {
  Labels unknown;
  const auto& apps = world.model.fields().inventory.apps;
  for (const auto& label : labels)
    if (std::ranges::find(apps, label, &AppInfo::label) == apps.end()) unknown.push_back(label);
  if (unknown.empty()) return std::nullopt;
  return ctlError(ExitCode::failed,
                  fmt::format("No application is known under {}. `corvanectl list` shows the labels, `corvanectl "
                              "discover` looks for applications.",
                              joined(unknown)));
}

ExitCode runStatus(const Command& command, const World& world) {
  // The state of the helper is looked at here and not through the model, which would note what it sees: this
  // verb writes nothing, since the application may be running.
  const auto& model = world.model;
  auto fields = model.fields();
  fields.helper.helperOperational = world.installation.isOperational();
  fields.helper.installomatorAvailable = world.files.exists(world.places.installomatorScript());
  fields.inventory.cycleCompletionMessage = model.computeCycleCompletionMessage();
  const StatusReport report{.fields = fields,
                            .statusLine = statusLine(fields, world.clock.now()),
                            .helperStatus = world.installation.status(),
                            .uncheckedAppCount = model.uncheckedAppCount(),
                            .updateCheckFailedCount = model.updateCheckFailedCount()};
  print(command, world, command.json ? statusJson(report) : JsonValue(),
        command.json ? "" : statusText(report, world.locale.calendar()));
  return ExitCode::done;
}

ExitCode runList(const Command& command, const World& world) {
  world.model.setFilterMode(command.filter);
  const auto apps = world.model.filteredApps();
  const auto facts = world.model.facts();
  if (command.json)
    world.out(writeJson(appsJson(apps, facts)) + "\n");
  else if (apps.empty() && command.filter != FilterMode::all)
    world.out("No application in this filter.\n");
  else
    world.out(appsText(apps, facts));
  return ExitCode::done;
}

ExitCode runHistory(const Command& command, const World& world) {
  auto receipts = world.receipts.readAllReceipts();
  if (!command.labels.empty()) {
    std::erase_if(receipts, [&](const PatchingReceipt& receipt) {
      return std::ranges::find(command.labels, receipt.label) == command.labels.end();
    });
  }
  world.out(command.json ? writeJson(receiptsJson(receipts)) + "\n" : receiptsText(receipts, world.locale.calendar()));
  return ExitCode::done;
}

ExitCode runDiscover(const Command& command, const World& world) {
  const auto helper = reachHelper(world);
  if (!helper) world.err("corvanectl: " + helper.error().text + "\n");
  world.model.refreshHelperState(false);
  world.model.discoverInstalledApps();
  waitUntilIdle(world);
  return finish(command, world, world.model.filteredApps(), helper ? ExitCode::failed : ExitCode::helperOutOfReach);
}

ExitCode runCheck(const Command& command, const World& world) {
  if (const auto helper = reachHelper(world); !helper)
    return tellError(helper.error(), command.json, ExitCode::helperOutOfReach, world);
  world.model.refreshHelperState(false);
  if (command.labels.empty())
    world.model.checkForUpdates();
  else
    world.model.checkForUpdates(command.labels);
  waitUntilIdle(world);
  if (const auto error = modelError(world)) return tellError(*error, command.json, ExitCode::failed, world);
  // The helper knows the whole catalogue, so what it did not answer for is known nowhere.
  if (const auto unknown = unknownLabels(world, command.labels))
    return tellError(*unknown, command.json, ExitCode::failed, world);
  return finish(command, world,
                command.labels.empty() ? world.model.filteredApps() : appsWithLabels(world, command.labels),
                ExitCode::failed);
}

// What of the labels named can be updated, and a sentence on each that cannot.
struct Wanted {
  Labels labels;
  std::vector<std::string> upToDate;
  std::vector<std::string> refused;
};

// Why a named application that is not pending cannot be updated; empty when there is no need to.
std::string whyNotUpdated(const AppInfo& app, const AppFacts& facts) {
  if (app.teamIDMismatch) return "is signed by another vendor than its label expects";
  if (isExcludedAppStoreApp(app, facts)) return "is updated by the App Store";
  if (app.updateCheckFailed) {
    const auto& reason = app.updateCheckFailureReason;
    return "could not be checked" + (reason && !reason->empty() ? ": " + *reason : std::string());
  }
  return app.newVersion ? "" : "was not checked yet; `corvanectl check` does";
}

Wanted wantedUpdates(const World& world, const Labels& named) {
  const auto facts = world.model.facts();
  Wanted wanted;
  if (named.empty()) {
    for (auto& label : world.model.actionableUpdateLabels())
      if (!isHeldBack(label, facts)) wanted.labels.push_back(std::move(label));
    return wanted;
  }
  for (const auto& app : appsWithLabels(world, named)) {
    if (isPending(app, facts)) {
      wanted.labels.push_back(app.label);
      continue;
    }
    const auto why = whyNotUpdated(app, facts);
    if (why.empty())
      wanted.upToDate.push_back(app.label.text + " is up to date.");
    else
      wanted.refused.push_back(fmt::format("{} {}.", app.label.text, why));
  }
  return wanted;
}

ExitCode runUpdate(const Command& command, const World& world) {
  if (const auto unknown = unknownLabels(world, command.labels))
    return tellError(*unknown, command.json, ExitCode::failed, world);
  const auto wanted = wantedUpdates(world, command.labels);
  if (!wanted.refused.empty())
    return tellError(ctlError(ExitCode::failed, fmt::format("Not updated: {}", fmt::join(wanted.refused, " "))),
                     command.json, ExitCode::failed, world);
  const auto remarks = wanted.upToDate.empty() ? "" : fmt::format("{}\n", fmt::join(wanted.upToDate, "\n"));
  if (wanted.labels.empty()) {
    const auto text = remarks.empty() ? "Nothing to update.\n" : remarks;
    print(command, world, JsonObject{{"success", true}, {"message", ""}, {"installedCount", 0}, {"apps", JsonArray{}}},
          text);
    return ExitCode::done;
  }
  if (const auto helper = reachHelper(world); !helper)
    return tellError(helper.error(), command.json, ExitCode::helperOutOfReach, world);
  world.model.refreshHelperState(false);

  std::optional<PatchRunAnswer> answer;
  // Labels that were named are no Update All: their failure arms no retry and closes no cycle.
  const auto operation = command.labels.empty() ? DiscoveryOperation::patchAll : DiscoveryOperation::patchSingle;
  world.model.startPatching(wanted.labels, operation, {},
                            [&](bool success, const std::string& message, std::int64_t installedCount) {
                              answer = {.success = success, .message = message, .installedCount = installedCount};
                            });
  waitUntilIdle(world);

  const auto apps = appsWithLabels(world, command.labels.empty() ? wanted.labels : command.labels);
  const auto facts = world.model.facts();
  const bool success = answer && answer->success;
  const auto message = answer ? answer->message : std::string();
  auto json = *appsJson(apps, facts).object();
  json.set("success", success);
  json.set("message", message);
  json.set("installedCount", answer ? answer->installedCount : 0);
  if (!success) {
    const auto error = ctlError(ExitCode::failed, message);
    json.set("error", *errorJson(error).find("error"));
    if (!command.json) tellError(error, false, ExitCode::failed, world);
  }
  print(command, world, json, remarks + (success ? message + "\n\n" : "") + appsText(apps, facts));
  return success ? ExitCode::done : ExitCode::failed;
}

}  // namespace

ExitCode tellError(const Error& error, bool json, ExitCode code, const World& world) {
  if (json)
    world.out(writeJson(errorJson(error)) + "\n");
  else
    world.err("corvanectl: " + error.text + (error.text.ends_with('\n') ? "" : "\n"));
  return code;
}

ExitCode runCommand(const Command& command, const World& world) {
  if (factsOf(command.verb).writes) {
    if (const auto taken = claim(world)) return tellError(*taken, command.json, ExitCode::applicationRuns, world);
    world.model.begin();
    world.model.refreshDeadlineDisplay();
  }
  switch (command.verb) {
    case Verb::status:
      return runStatus(command, world);
    case Verb::list:
      return runList(command, world);
    case Verb::discover:
      return runDiscover(command, world);
    case Verb::check:
      return runCheck(command, world);
    case Verb::update:
      return runUpdate(command, world);
    case Verb::history:
      return runHistory(command, world);
    case Verb::settings:
      break;
  }
  print(command, world, settingsJson(world.preferences), command.json ? "" : settingsText(world.preferences));
  return ExitCode::done;
}

}  // namespace corvane::ctl
