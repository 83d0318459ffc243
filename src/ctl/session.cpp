#include "ctl/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "core/preferences/display_title.h"
#include "ctl/report.h"
#include "workflow/app_predicates.h"
#include "workflow/status_texts.h"
#include "workflow/status_view_model.h"

namespace corvane::ctl {
namespace {

constexpr Duration kNoLimit = std::chrono::hours(24 * 365);

// What a command has in its hands once the model stands.
struct Session {
  const Command& command;
  const World& world;
  const WorkflowServices& services;
  StatusViewModel& model;
};

Error ctlError(ExitCode code, std::string text) {
  return {.domain = "CRVCtl", .code = static_cast<int>(code), .text = std::move(text)};
}

void print(const Session& session, const JsonValue& json, std::string_view text) {
  session.world.out(session.command.json ? writeJson(json) + "\n" : std::string(text));
}

// Waits until the model rests, showing what it says meanwhile.
void waitUntilIdle(const Session& session) {
  std::string shown;
  const auto show = [&] {
    const auto& message = session.model.fields().messages.statusMessage;
    if (!session.world.progress || !message || *message == shown) return;
    shown = *message;
    session.world.progress(shown);
  };
  show();
  session.world.pump(
      [&] {
        show();
        return session.model.isIdle();
      },
      kNoLimit);
  if (session.world.progress) session.world.progress("");
}

// Starts the helper when it does not run, and asks it once: a heartbeat outlives the helper by a minute, an
// answer does not.
Status reachHelper(const Session& session) {
  std::optional<Status> answer;
  session.world.helperStart.ensureRunning([&](Status status) { answer = std::move(status); });
  session.world.pump([&] { return answer.has_value(); }, kNoLimit);
  if (!*answer) return *answer;
  answer.reset();
  session.services.helper.getStatus(
      [&](const Result<StatusInfo>& status) { answer = status ? Status() : Status(std::unexpected(status.error())); });
  session.world.pump([&] { return answer.has_value(); }, kNoLimit);
  return *answer;
}

std::optional<Error> claim(const World& world) {
  const auto attempt = world.stateLock.take();
  switch (attempt.outcome) {
    case SessionLock::Outcome::heldByOther:
      return ctlError(ExitCode::applicationRuns,
                      AppDisplayTitle(world.services.preferences.loadConfiguration())
                          .userFacing("Corvane or another corvanectl is at work and owns the state. Do this in the "
                                      "window, or quit it and try again."));
    case SessionLock::Outcome::couldNotMakeFolder:
    case SessionLock::Outcome::couldNotOpen:
      world.err(fmt::format("corvanectl: the state could not be claimed ({}); continuing\n", attempt.error));
      break;
    case SessionLock::Outcome::taken:
      break;
  }
  return std::nullopt;
}

std::optional<Error> modelError(const Session& session) {
  if (const auto& message = session.model.fields().messages.errorMessage) return ctlError(ExitCode::failed, *message);
  return std::nullopt;
}

// What the model says last, and the applications concerned; what went wrong stands beside them.
ExitCode finish(const Session& session, const Apps& apps, ExitCode whenFailed) {
  const auto error = modelError(session);
  if (error && apps.empty()) return tellError(*error, session.command.json, whenFailed, session.world);
  const auto facts = session.model.facts();
  auto json = *appsJson(apps, facts).object();
  const auto& message = session.model.fields().messages.statusMessage;
  if (message) json.set("message", *message);
  if (error) {
    json.set("error", *errorJson(*error).find("error"));
    if (!session.command.json) tellError(*error, false, whenFailed, session.world);
  }
  print(session, json, (message ? *message + "\n\n" : std::string()) + (apps.empty() ? "" : appsText(apps, facts)));
  return error ? whenFailed : ExitCode::done;
}

Apps appsWithLabels(const Session& session, const Labels& labels) {
  Apps apps;
  for (const auto& app : session.model.fields().inventory.apps)
    if (std::ranges::find(labels, app.label) != labels.end()) apps.push_back(app);
  return apps;
}

std::optional<Error> unknownLabels(const Session& session, const Labels& labels) {
  Labels unknown;
  const auto& apps = session.model.fields().inventory.apps;
  for (const auto& label : labels)
    if (std::ranges::find(apps, label, &AppInfo::label) == apps.end()) unknown.push_back(label);
  if (unknown.empty()) return std::nullopt;
  return ctlError(ExitCode::failed,
                  fmt::format("No application is known under {}. `corvanectl list` shows the labels, `corvanectl "
                              "discover` looks for applications.",
                              joined(unknown)));
}

ExitCode runStatus(const Session& session) {
  // The state of the helper is looked at here and not through the model, which would note what it sees: this
  // verb writes nothing, since the application may be running.
  const auto& model = session.model;
  auto fields = model.fields();
  fields.helper.helperOperational = session.services.installation.isOperational();
  fields.helper.installomatorAvailable = session.services.files.exists(session.services.places.installomatorScript());
  fields.inventory.cycleCompletionMessage = model.computeCycleCompletionMessage();
  const StatusReport report{.fields = fields,
                            .statusLine = statusLine(fields, session.services.clock.now()),
                            .helperStatus = session.services.installation.status(),
                            .uncheckedAppCount = model.uncheckedAppCount(),
                            .updateCheckFailedCount = model.updateCheckFailedCount()};
  print(session, session.command.json ? statusJson(report) : JsonValue(),
        session.command.json ? "" : statusText(report, session.services.locale.calendar()));
  return ExitCode::done;
}

ExitCode runList(const Session& session) {
  session.model.setFilterMode(session.command.filter);
  const auto apps = session.model.filteredApps();
  const auto facts = session.model.facts();
  if (session.command.json)
    session.world.out(writeJson(appsJson(apps, facts)) + "\n");
  else if (apps.empty() && session.command.filter != FilterMode::all)
    session.world.out("No application in this filter.\n");
  else
    session.world.out(appsText(apps, facts));
  return ExitCode::done;
}

ExitCode runHistory(const Session& session) {
  auto receipts = session.services.receipts.readAllReceipts();
  if (!session.command.labels.empty()) {
    std::erase_if(receipts, [&](const PatchingReceipt& receipt) {
      return std::ranges::find(session.command.labels, receipt.label) == session.command.labels.end();
    });
  }
  session.world.out(session.command.json ? writeJson(receiptsJson(receipts)) + "\n"
                                         : receiptsText(receipts, session.services.locale.calendar()));
  return ExitCode::done;
}

ExitCode runDiscover(const Session& session) {
  const auto helper = reachHelper(session);
  if (!helper) session.world.err("corvanectl: " + helper.error().text + "\n");
  session.model.refreshHelperState(false);
  session.model.discoverInstalledApps();
  waitUntilIdle(session);
  return finish(session, session.model.filteredApps(), helper ? ExitCode::failed : ExitCode::helperOutOfReach);
}

ExitCode runCheck(const Session& session) {
  if (const auto helper = reachHelper(session); !helper)
    return tellError(helper.error(), session.command.json, ExitCode::helperOutOfReach, session.world);
  session.model.refreshHelperState(false);
  if (session.command.labels.empty())
    session.model.checkForUpdates();
  else
    session.model.checkForUpdates(session.command.labels);
  waitUntilIdle(session);
  if (const auto error = modelError(session))
    return tellError(*error, session.command.json, ExitCode::failed, session.world);
  // The helper knows the whole catalogue, so what it did not answer for is known nowhere.
  if (const auto unknown = unknownLabels(session, session.command.labels))
    return tellError(*unknown, session.command.json, ExitCode::failed, session.world);
  return finish(
      session,
      session.command.labels.empty() ? session.model.filteredApps() : appsWithLabels(session, session.command.labels),
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

Wanted wantedUpdates(const Session& session, const Labels& named) {
  const auto facts = session.model.facts();
  Wanted wanted;
  if (named.empty()) {
    for (auto& label : session.model.actionableUpdateLabels())
      if (!isHeldBack(label, facts)) wanted.labels.push_back(std::move(label));
    return wanted;
  }
  for (const auto& app : appsWithLabels(session, named)) {
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

ExitCode runUpdate(const Session& session) {
  if (const auto unknown = unknownLabels(session, session.command.labels))
    return tellError(*unknown, session.command.json, ExitCode::failed, session.world);
  const auto wanted = wantedUpdates(session, session.command.labels);
  if (!wanted.refused.empty())
    return tellError(ctlError(ExitCode::failed, fmt::format("Not updated: {}", fmt::join(wanted.refused, " "))),
                     session.command.json, ExitCode::failed, session.world);
  const auto remarks = wanted.upToDate.empty() ? "" : fmt::format("{}\n", fmt::join(wanted.upToDate, "\n"));
  if (wanted.labels.empty()) {
    const auto text = remarks.empty() ? "Nothing to update.\n" : remarks;
    print(session, JsonObject{{"success", true}, {"message", ""}, {"installedCount", 0}, {"apps", JsonArray{}}}, text);
    return ExitCode::done;
  }
  if (const auto helper = reachHelper(session); !helper)
    return tellError(helper.error(), session.command.json, ExitCode::helperOutOfReach, session.world);
  session.model.refreshHelperState(false);

  std::optional<PatchRunAnswer> answer;
  // Labels that were named are no Update All: their failure arms no retry and closes no cycle.
  const auto operation =
      session.command.labels.empty() ? DiscoveryOperation::patchAll : DiscoveryOperation::patchSingle;
  session.model.startPatching(wanted.labels, operation, {},
                              [&](bool success, const std::string& message, std::int64_t installedCount) {
                                answer = {.success = success, .message = message, .installedCount = installedCount};
                              });
  waitUntilIdle(session);

  const auto apps = appsWithLabels(session, session.command.labels.empty() ? wanted.labels : session.command.labels);
  const auto facts = session.model.facts();
  const bool success = answer && answer->success;
  const auto message = answer ? answer->message : std::string();
  auto json = *appsJson(apps, facts).object();
  json.set("success", success);
  json.set("message", message);
  json.set("installedCount", answer ? answer->installedCount : 0);
  if (!success) {
    const auto error = ctlError(ExitCode::failed, message);
    json.set("error", *errorJson(error).find("error"));
    if (!session.command.json) tellError(error, false, ExitCode::failed, session.world);
  }
  print(session, json, remarks + (success ? message + "\n\n" : "") + appsText(apps, facts));
  return success ? ExitCode::done : ExitCode::failed;
}

ExitCode run(const Session& session) {
  switch (session.command.verb) {
    case Verb::status:
      return runStatus(session);
    case Verb::list:
      return runList(session);
    case Verb::discover:
      return runDiscover(session);
    case Verb::check:
      return runCheck(session);
    case Verb::update:
      return runUpdate(session);
    case Verb::history:
      return runHistory(session);
    case Verb::settings:
      break;
  }
  const auto& preferences = session.services.preferences;
  print(session, settingsJson(preferences), session.command.json ? "" : settingsText(preferences));
  return ExitCode::done;
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
  const bool writes = factsOf(command.verb).writes;
  if (writes)
    if (const auto taken = claim(world)) return tellError(*taken, command.json, ExitCode::applicationRuns, world);
  StatusViewModel model(world.services);
  if (writes) {
    model.begin();
    model.refreshDeadlineDisplay();
  }
  return run({.command = command, .world = world, .services = world.services, .model = model});
}

}  // namespace corvane::ctl
