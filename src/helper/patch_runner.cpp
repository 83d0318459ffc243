#include "helper/patch_runner.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "core/client/helper_messages.h"
#include "core/discovery/app_discovery_service.h"
#include "core/preferences/options_codec.h"
#include "helper/brief_labels.h"
#include "helper/root_trust.h"
#include "helper/tool_output.h"

namespace corvane {
namespace {

Status notReady(std::string text) { return std::unexpected(helperError(HelperErrorCode::notReady, std::move(text))); }

Error noneOf(const Labels& labels, const CorvaneConfiguration& config) {
  const bool ignored = std::ranges::any_of(
      labels, [&](const Label& label) { return AppDiscoveryService::isIgnoredLabel(label, std::nullopt, config); });
  const auto* why = ignored ? "The settings leave out, or the catalogue does not have, the labels {}"
                            : "The catalogue has none of the labels {}";
  return helperError(HelperErrorCode::unknownLabel, fmt::format(fmt::runtime(why), brief(labels)));
}

}  // namespace

struct PatchRunner::Run {
  PatchOrder order;
  std::map<Label, AppInfo> apps;
  std::vector<PatchOutcome> outcomes;
  std::shared_ptr<ChildHandle> child;
  CorvaneConfiguration config;  // that the label in hand was begun with: what it is judged by
  ToolWords words;              // of the label in hand
  std::string stagedAddress;    // that the tool was given for it; empty without one
  bool usedStaged = false;
  bool inHand = false;  // the tool was run for a label that has no outcome yet
  bool stopping = false;
  Lease stopGrace;
  Completion<RunReport> done;
};

Status checkTool(const std::filesystem::path& script, const std::filesystem::path& root, uid_t ownUid) {
  struct stat state {};
  if (lstat(script.c_str(), &state) != 0)
    return notReady("Installomator not found — update detection and patching will not work.");
  if (!S_ISREG(state.st_mode) || (state.st_mode & 0111) == 0)
    return notReady(fmt::format("Installomator at {} cannot be executed", script.string()));
  if (auto trusted = checkTrustedPath(script, root, ownUid); !trusted)
    return notReady(fmt::format("Installomator at {} can be changed by others and is not run: {}", script.string(),
                                trusted.error().text));
  return {};
}

std::vector<std::string> toolArguments(const Label& label, const HelperSetting& setting, Attendance attendance,
                                       const Logger& log) {
  const auto source = setting.optionsAreManaged ? OptionsSource::managed : OptionsSource::user;
  auto options = optionArguments(setting.config.installomatorOptions, source);
  for (const auto& left : options.leftOut)
    log.warning(fmt::format("Installomator option {} is left out: {}", left.key, left.reason));
  std::vector<std::string> arguments{label.text, "DEBUG=0"};
  std::ranges::move(options.arguments, std::back_inserter(arguments));
  const bool mayDisturb = attendance == Attendance::attended ||
                          optionIs(setting.config.installomatorOptions, "BLOCKING_PROCESS_ACTION", "ignore");
  // Of equal keys the tool takes the last.
  if (!mayDisturb) arguments.emplace_back("BLOCKING_PROCESS_ACTION=silent_fail");
  return arguments;
}

PatchRunner::PatchRunner(Services services)
    : s_(std::move(services)), log_(s_.log, "PatchRunner"), tool_(s_.log, "Installomator") {}

PatchRunner::~PatchRunner() {
  if (!run_) return;
  if (run_->child) run_->child->kill();
  run_->done.abandon();
}

PatchProgressInfo PatchRunner::progress() const {
  if (!run_) return {};
  const auto done = run_->outcomes.size();
  return {.isActive = true,
          .currentLabel = done < run_->order.labels.size() ? run_->order.labels[done].text : std::string(),
          .completedCount = static_cast<std::int64_t>(done),
          .totalLabels = static_cast<std::int64_t>(run_->order.labels.size())};
}

void PatchRunner::run(PatchOrder order, Completion<RunReport> done) {
  run_ = std::make_unique<Run>();
  run_->order = std::move(order);
  const auto& labels = run_->order.labels;
  run_->done = std::move(done);
  log_.info(fmt::format("Starting a run of {} label(s): {}.", labels.size(), brief(labels)));
  const auto places = s_.setting().constants;
  if (auto ready = checkTool(places.installomatorScript(), places.root, s_.ownUid); !ready)
    return finish(ready.error());
  if (auto written = s_.record.begin(labels); !written) {
    s_.record.end();
    return finish(helperError(HelperErrorCode::storage,
                              fmt::format("The helper cannot write its state: {}", written.error().text)));
  }
  s_.discoverer.discover(
      {.labels = LabelSet(labels.begin(), labels.end()), .latest = AppDiscoverer::Latest::remembered},
      lifeline_.guard([this](Result<Apps> apps) { begin(std::move(apps)); }));
}

void PatchRunner::begin(Result<Apps> apps) {
  if (!run_) return;
  if (!apps || apps->empty()) {
    s_.record.end();
    return finish(!apps ? apps.error() : noneOf(run_->order.labels, s_.setting().config));
  }
  for (auto& app : *apps) run_->apps.emplace(app.label, app);
  nextLabel();
}

void PatchRunner::nextLabel() {
  const auto done = run_->outcomes.size();
  if (done == run_->order.labels.size()) {
    s_.record.end();
    return finish();
  }
  const auto& label = run_->order.labels[done];
  const auto found = run_->apps.find(label);
  const auto app = found == run_->apps.end() ? std::nullopt : std::optional(found->second);
  if (run_->order.comesTo) run_->order.comesTo(done, app);
  const auto step = decideBeforeRun(label, app, s_.setting().config);
  if (step != PatchStep::install) return settle(outcomeWithoutRun(step, label, app));
  const auto objection = run_->order.objection ? run_->order.objection(*app) : std::nullopt;
  if (objection) return settle(outcomeLeftOut(label, app, *objection));
  runTool(label, *app);
}

void PatchRunner::runTool(const Label& label, const AppInfo& before) {
  const auto setting = s_.setting();
  // Asked anew for each label: a run takes hours, and each install changes the machine.
  const auto tool = setting.constants.installomatorScript();
  if (auto ready = checkTool(tool, setting.constants.root, s_.ownUid); !ready) {
    log_.error(ready.error().text);
    s_.record.end();
    return finish(ready.error());
  }
  log_.info(fmt::format("{}: installing {} over {}.", label.text, before.newVersion.value_or("the latest version"),
                        before.currentVersion.value_or("nothing")));
  auto arguments = toolArguments(label, setting, run_->order.attendance, log_);
  const auto staged = s_.staged.find(label, before.newVersion);
  run_->stagedAddress = staged ? fileAddress(staged->file) : std::string();
  if (staged) arguments.push_back(quotedAssignment("downloadURL", run_->stagedAddress).value());
  ChildSpec spec{.executable = tool.string(),
                 .arguments = std::move(arguments),
                 .environment = toolEnvironment(s_.toolHome),
                 .timeLimit = toolTimeLimit(setting.config),
                 .outputLimit = 64U << 10U};
  s_.record.working(label, run_->outcomes.size(), std::nullopt);
  run_->config = setting.config;
  run_->words = {};
  run_->usedStaged = false;
  run_->inHand = true;
  run_->child = s_.children.start(
      std::move(spec), [this, label, alive = lifeline_.guard([this, label](std::string_view line) {
        toolLine(label, line);
      })](std::string_view line) mutable { alive(line); },
      lifeline_.guard([this, before](Result<ChildExit> exit) { toolEnded(before, std::move(exit)); }));
  if (run_->child) s_.record.working(label, run_->outcomes.size(), run_->child->pid());
}

void PatchRunner::toolLine(const Label& label, std::string_view line) {
  if (run_) {
    run_->words.take(line);
    const auto& address = run_->stagedAddress;
    run_->usedStaged |= !address.empty() && toolMessage(line).value_or("").starts_with("Downloading " + address);
  }
  tool_.info(fmt::format("{}: {}", label.text, toolMessage(line).value_or(line)));
  if (const auto process = blockingProcessIn(line))
    log_.info(fmt::format("{}: {} is open; Installomator may ask its user to quit it.", label.text, *process));
}

void PatchRunner::toolEnded(const AppInfo& before, Result<ChildExit> exit) {
  if (!run_) return;
  run_->child.reset();
  // What it left running on purpose is nobody's to end any more.
  s_.record.working(before.label, run_->outcomes.size(), std::nullopt);
  if (run_->stopping) return stopped();
  if (!exit) {
    log_.error(fmt::format("{}: {}", before.label.text, exit.error().text));
    constexpr int cannotRun = 126;  // what a shell says of a program that it cannot execute
    return settle(outcomeOfRun(before, before, {.code = cannotRun}, run_->config));
  }
  verify(before, {.code = exit->code, .timedOut = exit->timedOut, .words = run_->words});
}

void PatchRunner::verify(const AppInfo& before, ToolEnd end) {
  s_.discoverer.discover({.labels = std::set{before.label}}, lifeline_.guard([this, before,
                                                                              end = std::move(end)](Result<Apps> apps) {
    if (!run_) return;
    const bool found = apps && !apps->empty();
    if (!found)
      log_.error(fmt::format("{}: what is installed now could not be read: {}", before.label.text,
                             apps ? "the catalogue or the settings leave the label out by now" : apps.error().text));
    settle(outcomeOfRun(before, found ? std::optional(apps->front()) : std::nullopt, end, run_->config));
  }));
}

void PatchRunner::settle(PatchOutcome outcome) {
  const auto line = fmt::format("{}: {}.", outcome.label.text, outcome.text);
  if (outcome.status == PatchingStatus::failure)
    log_.error(line);
  else
    log_.info(line);
  const auto label = outcome.label;
  if (const auto app = run_->apps.find(label); app != run_->apps.end()) outcome.name = app->second.displayName();
  outcome.usedStagedInstaller = run_->inHand && run_->usedStaged;
  // One that failed is not tried again: the next attempt downloads.
  if (outcome.usedStagedInstaller && outcome.status != PatchingStatus::skipped) s_.staged.remove(label);
  const auto written = outcome.receipt ? s_.receipts.append(receiptOf(outcome, s_.clock.now())) : Status();
  run_->outcomes.push_back(std::move(outcome));
  run_->inHand = false;
  if (!written) return endWithoutReceipt(label, written.error());
  s_.main.post(lifeline_.guard([this] {
    if (run_) nextLabel();
  }));
}

// What happened is nowhere on disk then, so no more is made to happen.
void PatchRunner::endWithoutReceipt(const Label& label, const Error& error) {
  const auto text = fmt::format("The receipt of {} cannot be written: {}", label.text, error.text);
  log_.error(text);
  s_.record.end();
  finish(helperError(HelperErrorCode::storage, fmt::format("{}. The run ended after {} of {} labels.", text,
                                                           run_->outcomes.size(), run_->order.labels.size())));
}

void PatchRunner::finish(std::optional<Error> error) {
  auto run = std::exchange(run_, nullptr);
  RunReport report{.outcomes = std::move(run->outcomes), .error = std::move(error)};
  const auto answer = answerOf(report);
  log_.info(fmt::format("The run ended: {}", answer ? answer->message : answer.error().text));
  s_.main.post([done = std::move(run->done), report = std::move(report)]() mutable { done(std::move(report)); });
}

void PatchRunner::stop() {
  if (!run_ || std::exchange(run_->stopping, true)) return;
  if (!run_->child) return stopped();
  log_.info("Telling Installomator to end.");
  run_->child->terminate();
  run_->stopGrace = s_.main.after(kToolStopGrace, [this] {
    if (run_ && run_->child) run_->child->kill();
  });
}

void PatchRunner::stopped() {
  if (!run_->inHand) s_.record.end();
  finish(helperError(HelperErrorCode::stopping, "The helper is stopping; the run was cut off"));
}

}  // namespace corvane
