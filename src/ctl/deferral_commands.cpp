#include "ctl/deferral_commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <iterator>

#include "core/policies/deferral_manager.h"
#include "ctl/report.h"
#include "workflow/app_predicates.h"
#include "workflow/deferral_texts.h"
#include "workflow/watchpoint.h"

namespace corvane::ctl {
namespace {

// The limits, what is used of them, and what they leave, at one moment.
struct Deadline {
  CorvaneConfiguration config;
  DeferralInfo info;
  DeferralDeadlineStatus status = DeferralDeadlineStatus::normal;
  std::optional<Date> hardDeadline;
  std::optional<Date> armed;
  std::vector<std::int64_t> options;
};

Deadline deadlineOf(const Session& session) {
  auto& store = session.services.preferences;
  const DeferralManager manager(store.loadConfiguration(), store, session.services.clock,
                                session.services.locale.calendar());
  return {.config = store.loadConfiguration(),
          .info = manager.getDeferralInfo(),
          .status = manager.checkDeadlines(),
          .hardDeadline = manager.hardDeadlineDate(),
          .armed = store.readNextAutoLaunch(),
          .options = session.model.availableDeferralOptions()};
}

JsonValue dateOrNull(std::optional<Date> date) { return date ? JsonValue(iso8601Utc(*date)) : JsonValue(); }
JsonValue numberOrNull(std::optional<std::int64_t> number) { return number ? JsonValue(*number) : JsonValue(); }

JsonValue deadlineJson(const Session& session, const Deadline& deadline) {
  JsonArray options;
  for (const auto minutes : deadline.options) options.emplace_back(minutes);
  const auto& store = session.services.preferences;
  const auto cycle = store.readPatchingCadenceState();
  const auto remaining = session.model.deferralsRemainingSummary();
  return JsonObject{{"deadlineStatus", rawName(deadline.status)},
                    {"focusDeferralCount", deadline.info.focusDeferralCount},
                    {"hardDeferralCount", deadline.info.hardDeferralCount},
                    {"deadlineCountHard", numberOrNull(deadline.config.deadlineCountHard)},
                    {"deadlineDaysHard", numberOrNull(deadline.config.deadlineDaysHard)},
                    {"hardDeadlineDate", dateOrNull(deadline.hardDeadline)},
                    {"nextAutoLaunch", dateOrNull(deadline.armed)},
                    {"automaticFocusDeferralArmed", store.readAutomaticFocusDeferralArmed()},
                    {"availableDeferralOptions", std::move(options)},
                    {"deferralsRemainingSummary", remaining ? JsonValue(*remaining) : JsonValue()},
                    {"currentPatchingStartDate", dateOrNull(cycle.currentPatchingStartDate)},
                    {"nextCycleStartDate", dateOrNull(cycle.nextCycleStartDate)}};
}

std::string optionsText(const Session& session, const std::vector<std::int64_t>& options) {
  std::vector<std::string> worded;
  for (const auto minutes : options)
    worded.push_back(fmt::format("{} ({} min)", deferralDurationText(minutes, session.services.locale), minutes));
  return fmt::format("{}", fmt::join(worded, ", "));
}

// Which limit is reached, and until when that stands.
std::string reachedText(const Session& session, const Deadline& deadline) {
  const auto& locale = session.services.locale;
  auto text = hardDeadlineText(deadline.info, deadline.config, session.services.clock.now());
  if (deadline.config.deadlineCountHard)
    text += fmt::format(" Deferrals: {} of {}.", deadline.info.hardDeferralCount, *deadline.config.deadlineCountHard);
  if (deadline.hardDeadline) text += fmt::format(" Deadline: {}.", locale.mediumDateShortTime(*deadline.hardDeadline));
  const auto cycle = session.services.preferences.readPatchingCadenceState();
  if (cycle.nextCycleStartDate)
    text += fmt::format(" Deferrals are possible again from {}, when the next cycle starts.",
                        locale.mediumDateShortTime(*cycle.nextCycleStartDate));
  return text;
}

std::string deadlineText(const Session& session, const Deadline& deadline) {
  const auto& locale = session.services.locale;
  std::string text;
  const auto line = [&](std::string_view name, const auto& value) { text += fmt::format("{:<24}{}\n", name, value); };
  const bool reached = deadline.status == DeferralDeadlineStatus::hardDeadlineReached;
  line("Deadline", reached ? "reached" : "not reached");
  const auto& limit = deadline.config.deadlineCountHard;
  line("Deferrals used", limit ? fmt::format("{} of {}", deadline.info.hardDeferralCount, *limit)
                               : fmt::format("{}, no limit", deadline.info.hardDeferralCount));
  line("Update Deadline", deadline.hardDeadline ? locale.mediumDateShortTime(*deadline.hardDeadline) : "none");
  if (deadline.armed)
    line("Next", locale.mediumDateShortTime(*deadline.armed) +
                     (*deadline.armed <= session.services.clock.now() ? ", due now" : ""));
  line("Lengths on offer", reached || deadline.options.empty() ? "none" : optionsText(session, deadline.options));
  if (reached)
    text += "\n" + reachedText(session, deadline) + "\n";
  else if (const auto remaining = session.model.deferralsRemainingSummary())
    text += "\n" + *remaining + "\n";
  return text;
}

std::optional<std::string> whyNotDeferred(const Session& session, const Deadline& deadline) {
  const auto minutes = session.command.minutes;
  if (deadline.status == DeferralDeadlineStatus::hardDeadlineReached)
    return "The update deadline has passed. " + reachedText(session, deadline);
  if (session.model.promptableUpdateLabels().empty()) return "No updates are pending, so there is nothing to put off.";
  if (std::ranges::find(deadline.options, minutes) != deadline.options.end()) return std::nullopt;
  if (deadline.options.empty())
    return fmt::format("No length on offer ends before the deadline, {}.",
                       session.services.locale.mediumDateShortTime(*deadline.hardDeadline));
  const bool endsTooLate =
      deadline.hardDeadline &&
      minutes >=
          std::chrono::floor<std::chrono::minutes>(*deadline.hardDeadline - session.services.clock.now()).count();
  return fmt::format("Updates cannot be put off for {} minutes. On offer: {}.{}", minutes,
                     optionsText(session, deadline.options),
                     endsTooLate ? fmt::format(" A deferral must end before the deadline, {}.",
                                               session.services.locale.mediumDateShortTime(*deadline.hardDeadline))
                                 : "");
}

// What the prompt would ask: nobody is there to answer it here.
ExitCode tellQuestion(const Session& session) {
  const auto deadline = deadlineOf(session);
  const auto rows = session.model.deferralPromptApps();
  JsonArray apps;
  std::string text;
  for (const auto& row : rows) {
    apps.push_back(JsonObject{{"label", row.label.text},
                              {"name", row.name},
                              {"currentVersion", row.currentVersion},
                              {"newVersion", row.newVersion},
                              {"behavior", std::string(behaviorText(row.behavior))},
                              {"forcedReinstall", row.forcedReinstall}});
    const auto versions = row.forcedReinstall ? row.currentVersion + " · Required reinstall"
                                              : fmt::format("{} → {}", row.currentVersion, row.newVersion);
    text += fmt::format("{}  {}  {}\n", row.name, versions, behaviorText(row.behavior));
  }
  const bool hard = session.model.fields().deferral.currentDeferralEscalation == DeferralEscalation::hard;
  auto json = *deadlineJson(session, deadline).object();
  json.set("asked", true);
  json.set("escalation", rawName(session.model.fields().deferral.currentDeferralEscalation));
  json.set("apps", std::move(apps));
  text += "\n";
  if (hard)
    text += fmt::format("Updates required. {}{}\n", reachedText(session, deadline),
                        deadline.armed ? fmt::format(" They install at {}.",
                                                     session.services.locale.mediumDateShortTime(*deadline.armed))
                                       : "");
  else
    text += fmt::format("`corvanectl update` installs them now; `corvanectl defer MINUTES` puts them off: {}.\n",
                        optionsText(session, deadline.options));
  print(session, json, text);
  return ExitCode::done;
}

}  // namespace

ExitCode runUpdateAll(const Session& session) {
  if (const auto unreached = reachHelper(session)) return tell(session, *unreached);
  session.model.refreshHelperState(false);
  session.model.updateAll(DeferralPromptHost::standalone);
  waitUntilIdle(session);
  const auto& fields = session.model.fields();
  if (fields.deferral.showDeferralPrompt) return tellQuestion(session);
  // In a complete cycle it installs without a question.
  if (const auto& end = fields.patch.lastEnd) return tellRun(session, *end, end->labels);
  return finish(session, {}, modelFailure(session));
}

ExitCode runDefer(const Session& session) {
  if (const auto why = whyNotDeferred(session, deadlineOf(session))) return tell(session, failed(*why));
  const auto labels = session.model.promptableUpdateLabels();
  session.model.setSelectedDeferralMinutes(session.command.minutes);
  session.model.deferUpdates(false);
  // No prompt asked about them, so the model has no list of its own.
  session.model.recordDeferralEvents(labels, DeferralEventType::userDeferred, session.command.minutes,
                                     session.model.fields().deferral.currentDeferralEscalation);
  const auto deadline = deadlineOf(session);
  auto json = *deadlineJson(session, deadline).object();
  const auto message = session.model.fields().messages.statusMessage.value_or("");
  json.set("success", true);
  json.set("message", message);
  print(session, json, message + "\n\n" + deadlineText(session, deadline));
  return ExitCode::done;
}

ExitCode runDeadline(const Session& session) {
  const auto deadline = deadlineOf(session);
  print(session, deadlineJson(session, deadline), session.command.json ? "" : deadlineText(session, deadline));
  return ExitCode::done;
}

}  // namespace corvane::ctl
