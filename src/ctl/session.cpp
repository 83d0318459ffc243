#include "ctl/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <system_error>

#include "app/diagnostic_job.h"
#include "core/preferences/display_title.h"
#include "ctl/deferral_commands.h"
#include "ctl/explain_command.h"
#include "ctl/label_judgement.h"
#include "ctl/report.h"
#include "ctl/running_command.h"
#include "ctl/validate_command.h"
#include "workflow/status_texts.h"

namespace corvane::ctl {
namespace {

// Work that runs may take as long as it takes.
constexpr Duration kNoLimit = std::chrono::hours(24 * 365);
// A helper answers what it is in milliseconds, runs or none; one that takes longer than this is stopped or hangs.
constexpr Duration kHelperAnswerLimit = 10s;

Error ctlError(ExitCode code, std::string text) {
  return {.domain = "CRVCtl", .code = static_cast<int>(code), .text = std::move(text)};
}

}  // namespace

Failure failed(std::string text) { return {.error = ctlError(ExitCode::failed, std::move(text))}; }

void print(const Session& session, const JsonValue& json, std::string_view text) {
  session.world.out(session.command.json ? writeJson(json) + "\n" : std::string(text));
}

ExitCode tell(const Session& session, const Failure& failure) {
  return tellError(failure.error, session.command.json, failure.code, session.world);
}

std::optional<Failure> modelFailure(const Session& session) {
  if (const auto& message = session.model.fields().messages.errorMessage) return failed(*message);
  return std::nullopt;
}

void waitUntilIdle(const Session& session, const std::function<bool()>& enough) {
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
        return session.model.isIdle() || (enough && enough());
      },
      kNoLimit);
  if (session.world.progress) session.world.progress("");
}

std::optional<Failure> reachHelper(const Session& session) {
  const auto outOfReach = [](Error error) { return Failure{std::move(error), ExitCode::helperOutOfReach}; };
  std::optional<Status> started;
  session.world.helperStart.ensureRunning([&](Status status) { started = std::move(status); });
  session.world.pump([&] { return started.has_value(); }, kNoLimit);
  if (!*started) return outOfReach(started->error());
  // Shared, for the answer may come after nobody waits for it any more.
  const auto answer = std::make_shared<std::optional<Result<StatusInfo>>>();
  session.services.helper.getStatus([answer](Result<StatusInfo> status) { *answer = std::move(status); });
  if (!session.world.pump([&] { return answer->has_value(); }, kHelperAnswerLimit))
    return outOfReach(ctlError(ExitCode::helperOutOfReach,
                               fmt::format("The root helper runs but did not answer within {} seconds.",
                                           std::chrono::floor<std::chrono::seconds>(kHelperAnswerLimit).count())));
  if (!**answer) return outOfReach((*answer)->error());
  return std::nullopt;
}

ExitCode finish(const Session& session, const Apps& apps, const std::optional<Failure>& failure) {
  if (failure && apps.empty()) return tell(session, *failure);
  const auto facts = session.model.facts();
  auto json = *appsJson(apps, facts).object();
  std::string text;
  if (failure) {
    json.set("error", *errorJson(failure->error).find("error"));
    if (!session.command.json) tell(session, *failure);
  } else if (const auto& message = session.model.fields().messages.statusMessage) {
    json.set("message", *message);
    text = *message + "\n\n";
  }
  print(session, json, text + (apps.empty() ? "" : appsText(apps, facts, session.world.columns)));
  return failure ? failure->code : ExitCode::done;
}

ExitCode tellRun(const Session& session, const PatchEnd& end, const Labels& labels) {
  const auto apps = appsWithLabels(session, labels);
  const auto facts = session.model.facts();
  auto json = *appsJson(apps, facts).object();
  json.set("success", end.success);
  json.set("message", end.message);
  json.set("installedCount", end.installedCount);
  if (!end.success) {
    const auto failure = failed(end.message);
    json.set("error", *errorJson(failure.error).find("error"));
    if (!session.command.json) tell(session, failure);
  }
  std::string text;
  if (end.success) text = end.message + (apps.empty() ? "\n" : "\n\n");
  print(session, json, text + (apps.empty() ? "" : appsText(apps, facts, session.world.columns)));
  return end.success ? ExitCode::done : ExitCode::failed;
}

Apps appsWithLabels(const Session& session, const Labels& labels) {
  Apps apps;
  for (const auto& app : session.model.fields().inventory.apps)
    if (std::ranges::find(labels, app.label) != labels.end()) apps.push_back(app);
  return apps;
}

namespace {

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

Labels knownLabels(const Session& session) {
  Labels labels;
  for (const auto& app : session.model.fields().inventory.apps) labels.push_back(app.label);
  return labels;
}

// What is wrong with the labels of the command when only `found` was found.
std::optional<Failure> labelFailure(const Session& session, const Labels& found) {
  auto trouble = labelTrouble(session.command.labels, found, session.model.fields().inventory.apps,
                              session.services.preferences.loadConfiguration());
  if (trouble.empty()) return std::nullopt;
  return failed(std::move(trouble));
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
  else if (apps.empty() && !session.model.fields().inventory.apps.empty())
    session.world.out("No application in this filter.\n");
  else
    session.world.out(appsText(apps, facts, session.world.columns));
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

// Why a discovery that came to its end did not do all that it is for.
std::optional<Failure> discoveryFailure(const Session& session, std::optional<Failure> unreached) {
  auto failure = modelFailure(session);
  if (unreached) {
    if (failure) unreached->error.text += " " + failure->error.text;
    return unreached;
  }
  // No check followed, though applications were found.
  if (!failure && !session.model.fields().helper.installomatorAvailable)
    return failed("Installomator not found — update detection and patching will not work.");
  return failure;
}

ExitCode runDiscover(const Session& session) {
  auto unreached = reachHelper(session);
  session.model.refreshHelperState(false);
  session.model.discoverInstalledApps();
  // Behind the direct scan the model may still believe in a helper that does not answer, and ask it for a check.
  const auto& operation = session.model.fields().gate.currentOperation;
  waitUntilIdle(session, [&] { return unreached && operation == DiscoveryOperation::checkUpdates; });
  return finish(session, session.model.filteredApps(), discoveryFailure(session, std::move(unreached)));
}

ExitCode runCheck(const Session& session) {
  if (const auto unreached = reachHelper(session)) return tell(session, *unreached);
  const auto& labels = session.command.labels;
  const auto& fields = session.model.fields();
  session.model.refreshHelperState(false);
  // Where nothing is known yet, a check of some would leave them as all there is on this Mac.
  if (labels.empty() || fields.inventory.apps.empty())
    session.model.checkForUpdates();
  else
    session.model.checkForUpdates(labels);
  waitUntilIdle(session);
  if (const auto failure = modelFailure(session)) return tell(session, *failure);
  if (labels.empty()) return finish(session, session.model.filteredApps(), std::nullopt);
  // Records of before do not count: what the helper did not answer for was not checked.
  const auto& answered = fields.discovery.answeredLabels;
  Labels checked;
  std::ranges::copy_if(labels, std::back_inserter(checked),
                       [&](const Label& label) { return std::ranges::find(answered, label) != answered.end(); });
  return finish(session, appsWithLabels(session, checked), labelFailure(session, answered));
}

ExitCode runUpdate(const Session& session) {
  if (const auto failure = labelFailure(session, knownLabels(session))) return tell(session, *failure);
  const auto wanted =
      wantedUpdates(session.command.labels, session.model.fields().inventory.apps, session.model.facts());
  if (!wanted.refused.empty())
    return tell(session, failed(fmt::format("Not updated: {}", fmt::join(wanted.refused, " "))));
  auto sentences = wanted.upToDate;
  if (wanted.labels.empty()) {
    if (sentences.empty()) sentences.emplace_back("Nothing to update.");
    return tellRun(session, {.success = true, .message = fmt::format("{}", fmt::join(sentences, " "))},
                   session.command.labels);
  }
  if (const auto unreached = reachHelper(session)) return tell(session, *unreached);
  session.model.refreshHelperState(false);

  // Labels that were named are no Update All: their failure arms no retry and closes no cycle.
  const auto& named = session.command.labels;
  session.model.startPatching(
      wanted.labels, named.empty() ? DiscoveryOperation::patchAll : DiscoveryOperation::patchSingle, {}, nullptr);
  waitUntilIdle(session);
  auto end = session.model.fields().patch.lastEnd.value_or(PatchEnd());
  sentences.push_back(std::move(end.message));
  end.message = fmt::format("{}", fmt::join(sentences, " "));
  return tellRun(session, end, named.empty() ? wanted.labels : named);
}

// Needs no model, so that it works where none would load.
ExitCode runBundle(const Command& command, const World& world) {
  if (world.progress) world.progress("Generating diagnostic bundle …");
  const auto zip = world.writeBundle(command.output.value_or(kDiagnosticFolder));
  if (world.progress) world.progress("");
  if (!zip) return tellError(zip.error(), command.json, ExitCode::failed, world);
  std::error_code gone;
  const auto size = std::filesystem::file_size(*zip, gone);
  const JsonObject object{{"path", zip->string()}, {"size", gone ? std::size_t{0} : std::size_t{size}}};
  world.out(command.json ? writeJson(object) + "\n" : zip->string() + "\n");
  return ExitCode::done;
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
      return session.command.all ? runUpdateAll(session) : runUpdate(session);
    case Verb::history:
      return runHistory(session);
    case Verb::defer:
      return runDefer(session);
    case Verb::deadline:
      return runDeadline(session);
    case Verb::explain:
      return runExplain(session);
    case Verb::settings:
    case Verb::bundle:  // neither needs a model
    case Verb::validate:
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
  if (command.verb == Verb::bundle) return runBundle(command, world);
  if (command.verb == Verb::validate) return runValidate(command, world);
  const bool writes = factsOf(command.verb).writes;
  if (writes)
    if (const auto taken = claim(world)) return tellError(*taken, command.json, ExitCode::applicationRuns, world);
  // It never begins, so that it does what it is asked and nothing by itself.
  StatusViewModel model(world.services);
  if (writes) model.refreshDeadlineDisplay();
  return run({.command = command, .world = world, .services = world.services, .model = model});
}

}  // namespace corvane::ctl
