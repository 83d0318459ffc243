#include "helper/patch_runner.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "base/localized.h"
#include "core/client/helper_messages.h"
#include "core/preferences/options_codec.h"
#include "helper/tool_output.h"

namespace corvane {
namespace {

Status notReady(std::string text) { return std::unexpected(helperError(HelperErrorCode::notReady, std::move(text))); }

}  // namespace

struct PatchRunner::Run {
  Labels labels;
  std::map<Label, AppInfo> apps;
  std::vector<PatchOutcome> outcomes;
  std::shared_ptr<ChildHandle> child;
  Completion<Result<PatchRunAnswer>> done;
};

Status checkTool(const std::filesystem::path& script, uid_t ownUid) {
  struct stat state {};
  if (stat(script.c_str(), &state) != 0)
    return notReady(localized("Installomator not found — update detection and patching will not work."));
  if (!S_ISREG(state.st_mode) || (state.st_mode & 0111) == 0)
    return notReady(fmt::format(fmt::runtime(localized("Installomator at {} cannot be executed")), script.string()));
  const bool trusted = state.st_uid == 0 && (state.st_mode & (S_IWGRP | S_IWOTH)) == 0;
  if (ownUid == 0 && !trusted)
    return notReady(
        fmt::format(fmt::runtime(localized("Installomator at {} can be changed by others than root and is not run")),
                    script.string()));
  return {};
}

std::vector<std::string> toolArguments(const Label& label, const HelperSetting& setting, const Logger& log) {
  const auto source = setting.optionsAreManaged ? OptionsSource::managed : OptionsSource::user;
  auto options = optionArguments(setting.config.installomatorOptions, source);
  for (const auto& left : options.leftOut)
    log.warning(fmt::format("Installomator option {} is left out: {}", left.key, left.reason));
  std::vector<std::string> arguments{label.text, "DEBUG=0"};
  std::ranges::move(options.arguments, std::back_inserter(arguments));
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
          .currentLabel = done < run_->labels.size() ? run_->labels[done].text : std::string(),
          .completedCount = static_cast<std::int64_t>(done),
          .totalLabels = static_cast<std::int64_t>(run_->labels.size())};
}

void PatchRunner::run(const Labels& labels, Completion<Result<PatchRunAnswer>> done) {
  run_ = std::make_unique<Run>();
  run_->labels = labels;
  run_->done = std::move(done);
  log_.info(fmt::format("Starting a run of {} label(s): {}.", labels.size(), joined(labels)));
  if (auto ready = checkTool(s_.setting().constants.installomatorScript(), s_.ownUid); !ready)
    return finish(std::unexpected(ready.error()));
  if (auto written = s_.record.begin(labels); !written) {
    s_.record.end();
    return finish(std::unexpected(helperError(
        HelperErrorCode::storage, fmt::format("The helper cannot write its state: {}", written.error().text))));
  }
  s_.discoverer.discover(
      {.labels = std::set<Label>(labels.begin(), labels.end()), .latest = AppDiscoverer::Latest::remembered},
      lifeline_.guard([this](Result<Apps> apps) { begin(std::move(apps)); }));
}

void PatchRunner::begin(Result<Apps> apps) {
  if (!run_) return;
  if (!apps || apps->empty()) {
    s_.record.end();
    return finish(std::unexpected(
        !apps ? apps.error()
              : helperError(HelperErrorCode::unknownLabel,
                            fmt::format("The catalogue has none of the labels {}", joined(run_->labels)))));
  }
  for (auto& app : *apps) run_->apps.emplace(app.label, app);
  nextLabel();
}

void PatchRunner::nextLabel() {
  const auto done = run_->outcomes.size();
  if (done == run_->labels.size()) {
    s_.record.end();
    return finish(answerOf(run_->outcomes));
  }
  const auto& label = run_->labels[done];
  const auto found = run_->apps.find(label);
  const auto app = found == run_->apps.end() ? std::nullopt : std::optional(found->second);
  const auto step = decideBeforeRun(app, s_.setting().config);
  if (step != PatchStep::install) return settle(outcomeWithoutRun(step, label, app));
  runTool(label, *app);
}

void PatchRunner::runTool(const Label& label, const AppInfo& before) {
  const auto setting = s_.setting();
  log_.info(fmt::format("{}: installing {} over {}.", label.text, before.newVersion.value_or("the latest version"),
                        before.currentVersion.value_or("nothing")));
  ChildSpec spec{.executable = setting.constants.installomatorScript().string(),
                 .arguments = toolArguments(label, setting, log_),
                 .environment = childEnvironment(s_.toolHome),
                 .timeLimit = kLabelInstallLimit,
                 .outputLimit = 64U << 10U};
  s_.record.working(label, run_->outcomes.size(), std::nullopt);
  run_->child = s_.children.start(
      std::move(spec), [this, label, alive = lifeline_.guard([this, label](std::string_view line) {
        toolLine(label, line);
      })](std::string_view line) mutable { alive(line); },
      lifeline_.guard([this, before](Result<ChildExit> exit) { toolEnded(before, std::move(exit)); }));
  if (run_->child) s_.record.working(label, run_->outcomes.size(), run_->child->pid());
}

void PatchRunner::toolLine(const Label& label, std::string_view line) {
  tool_.info(fmt::format("{}: {}", label.text, toolMessage(line).value_or(line)));
  if (const auto process = blockingProcessIn(line))
    log_.info(fmt::format("{}: {} is open; Installomator may ask its user to quit it.", label.text, *process));
}

void PatchRunner::toolEnded(const AppInfo& before, Result<ChildExit> exit) {
  if (!run_) return;
  run_->child.reset();
  if (!exit) {
    log_.error(fmt::format("{}: {}", before.label.text, exit.error().text));
    constexpr int cannotRun = 126;  // what a shell says of a program that it cannot execute
    return settle(outcomeOfRun(before, before, {.code = cannotRun}, s_.setting().config));
  }
  verify(before, {.code = exit->code, .timedOut = exit->timedOut});
}

void PatchRunner::verify(const AppInfo& before, ToolEnd end) {
  s_.discoverer.discover({.labels = std::set{before.label}}, lifeline_.guard([this, before, end](Result<Apps> apps) {
    if (!run_) return;
    const bool found = apps && !apps->empty();
    settle(outcomeOfRun(before, found ? std::optional(apps->front()) : std::nullopt, end, s_.setting().config));
  }));
}

void PatchRunner::settle(PatchOutcome outcome) {
  const auto line = fmt::format("{}: {}.", outcome.label.text, outcome.text);
  if (outcome.status == PatchingStatus::failure)
    log_.error(line);
  else
    log_.info(line);
  if (outcome.receipt) {
    if (auto written = s_.receipts.append(receiptOf(outcome, s_.clock.now())); !written)
      log_.error(fmt::format("{}: its receipt could not be written: {}", outcome.label.text, written.error().text));
  }
  run_->outcomes.push_back(std::move(outcome));
  s_.main.post(lifeline_.guard([this] {
    if (run_) nextLabel();
  }));
}

void PatchRunner::finish(Result<PatchRunAnswer> answer) {
  auto run = std::exchange(run_, nullptr);
  log_.info(fmt::format("The run ended: {}", answer ? answer->message : answer.error().text));
  s_.main.post([done = std::move(run->done), answer = std::move(answer)]() mutable { done(std::move(answer)); });
}

void PatchRunner::stop() {
  if (!run_) return;
  if (run_->child) run_->child->kill();
  s_.record.end();
  finish(std::unexpected(helperError(HelperErrorCode::stopping, "The helper is stopping; the run was cut off")));
}

}  // namespace corvane
