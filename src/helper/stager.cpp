#include "helper/stager.h"

#include <fmt/format.h>

#include <set>
#include <utility>

#include "base/atomic_file.h"
#include "core/policies/deferral_install_behavior_resolver.h"
#include "helper/brief_labels.h"
#include "helper/label_evaluation.h"
#include "helper/patch_runner.h"
#include "helper/tool_output.h"

namespace corvane {
namespace {

constexpr std::size_t kToolLimit = 16U << 20U;  // the assembled tool has some 600 kB
constexpr const char* kToolName = "Installomator.sh";

}  // namespace

struct Stager::Staging {
  Labels labels;
  Apps apps;  // still to be staged, the next one last
  Task done;
  std::shared_ptr<ChildHandle> child;
  std::optional<std::string> archive;
  std::size_t count = 0;
  std::string stopping;  // why, when it is to end
  bool outOfSpace = false;
  Lease spaceLooks;
  Lease stopGrace;
};

std::optional<std::string> downloadedArchiveIn(std::string_view line) {
  const auto message = toolMessage(line);
  constexpr std::string_view head = "Downloaded ";
  constexpr std::string_view tail = " – Type is ";
  if (!message || !message->starts_with(head)) return std::nullopt;
  const auto end = message->find(tail);
  if (end == std::string_view::npos || end == head.size()) return std::nullopt;
  return std::string(message->substr(head.size(), end - head.size()));
}

Stager::Stager(Services services) : s_(std::move(services)), log_(s_.log, "Staging"), tool_(s_.log, "Installomator") {}

Stager::~Stager() {
  if (staging_ && staging_->child) staging_->child->kill();
}

void Stager::stage(Labels labels, Task done) {
  staging_ = std::make_unique<Staging>();
  staging_->labels = std::move(labels);
  staging_->done = std::move(done);
  s_.discoverer.discover({.labels = LabelSet(staging_->labels.begin(), staging_->labels.end()),
                          .latest = AppDiscoverer::Latest::remembered},
                         lifeline_.guard([this](const Result<Apps>& apps) { begin(apps); }));
}

bool Stager::wanted(const AppInfo& app, const CorvaneConfiguration& config) const {
  if (!app.newVersion || isNeverEvaluated(app.label)) return false;
  if (decideBeforeRun(app.label, app, config) != PatchStep::install) return false;
  // One with an update tool of its own is updated without a download.
  return !app.isInstalled() || DeferralInstallBehaviorResolver::behavior(
                                   {.isOpen = true, .installomatorOptions = config.installomatorOptions},
                                   s_.facts.installFacts(app.label)) != DeferralInstallBehavior::ownUpdateTool;
}

void Stager::begin(const Result<Apps>& apps) {
  if (!staging_->stopping.empty()) return finish();
  if (!apps) {
    log_.error(fmt::format("Nothing is staged: {}", apps.error().text));
    return finish();
  }
  const auto config = s_.setting().config;
  s_.staged.sweep([&](const StagedInstaller& staged) {
    const auto* app = appWith(*apps, staged.label);
    return !app || (app->newVersion == staged.version && wanted(*app, config));
  });
  for (const auto& label : withoutDuplicates(staging_->labels)) {
    const auto* app = appWith(*apps, label);
    if (app && wanted(*app, config) && !s_.staged.find(label, app->newVersion))
      staging_->apps.insert(staging_->apps.begin(), *app);
  }
  next();
}

void Stager::next() {
  if (!staging_->stopping.empty() || staging_->apps.empty()) return finish();
  const auto app = std::move(staging_->apps.back());
  staging_->apps.pop_back();
  if (s_.freeBytes(s_.staged.folder()) < kStagingNeedsFree) {
    log_.warning(fmt::format("Nothing more is staged: less than {} GB are free.", kStagingNeedsFree >> 30U));
    return finish();
  }
  const auto started = startTool(app);
  if (started) return;
  log_.error(fmt::format("{}: not staged: {}", app.label.text, started.error().text));
  s_.staged.dropPartial(app.label);
  s_.main.post(lifeline_.guard([this] { next(); }));
}

Status Stager::startTool(const AppInfo& app) {
  const auto setting = s_.setting();
  const auto original = setting.constants.installomatorScript();
  if (auto ready = checkTool(original, setting.constants.root, s_.ownUid); !ready) return ready;
  const auto folder = s_.staged.makePartial(app.label);
  if (!folder) return std::unexpected(folder.error());
  const auto text = readFile(original, kToolLimit);
  if (!text) return std::unexpected(text.error());
  const auto tool = *folder / kToolName;
  if (auto copied = writeFileAtomically(tool, *text, 0700); !copied) return copied;
  if (auto written = s_.record.begin({app.label}); !written) return written;
  auto arguments = toolArguments(app.label, setting, Attendance::attended, log_);
  // Of equal keys the tool takes the last. The options of an install stay, since some say how to get out to the
  // network.
  for (const char* own : {"DEBUG=1", "NOTIFY=silent", "BLOCKING_PROCESS_ACTION=ignore", "REOPEN=no",
                          "INTERRUPT_DND=yes", "INSTALL=force", "updateTool=\"\""})
    arguments.emplace_back(own);
  log_.info(fmt::format("{}: downloading {}.", app.label.text, *app.newVersion));
  staging_->archive.reset();
  staging_->outOfSpace = false;
  staging_->child = s_.children.start(
      {.executable = tool.string(),
       .arguments = std::move(arguments),
       .environment = toolEnvironment(s_.toolHome),
       .folder = folder->string(),
       .timeLimit = kStagingTimeLimit,
       .outputLimit = 64U << 10U,
       .endsGroup = true},
      [this, label = app.label, alive = lifeline_.guard([this](const Label& of, std::string_view line) {
        if (!staging_) return;
        if (auto archive = downloadedArchiveIn(line)) staging_->archive = std::move(archive);
        tool_.verbose(fmt::format("{}: {}", of.text, toolMessage(line).value_or(line)));
      })](std::string_view line) mutable { alive(label, line); },
      lifeline_.guard([this, app](const Result<ChildExit>& exit) { toolEnded(app, exit); }));
  if (!staging_->child) return {};
  s_.record.working(app.label, 0, staging_->child->pid());
  staging_->spaceLooks = s_.main.every(
      kFreeSpaceLook, [this] { watchFreeSpace(); }, 1s);
  return {};
}

void Stager::watchFreeSpace() {
  if (s_.freeBytes(s_.staged.folder()) >= kStagingLeavesFree || !staging_->child) return;
  staging_->outOfSpace = true;
  staging_->child->kill();
}

void Stager::toolEnded(const AppInfo& app, const Result<ChildExit>& exit) {
  staging_->child.reset();
  staging_->spaceLooks.release();
  staging_->stopGrace.release();
  s_.record.end();
  std::string trouble;
  if (!staging_->stopping.empty())
    trouble = staging_->stopping;
  else if (staging_->outOfSpace)
    trouble = fmt::format("less than {} GB were left free", kStagingLeavesFree >> 30U);
  else if (!exit)
    trouble = exit.error().text;
  else if (exit->timedOut)
    trouble = "took too long and was ended";
  else if (exit->code != 0)
    trouble = fmt::format("the tool ended with code {}", exit->code);
  else if (!staging_->archive)
    trouble = "the tool told of no download";
  if (!trouble.empty()) {
    log_.warning(fmt::format("{}: not staged: {}.", app.label.text, trouble));
    s_.staged.dropPartial(app.label);
    return next();
  }
  // Several gigabytes are synced to the disk.
  runThen(
      s_.work, s_.main,
      [folder = s_.staged.folder(), label = app.label, name = *staging_->archive, version = *app.newVersion,
       now = s_.clock.now()] { return StagedInstallers::keep(folder, label, name, version, now); },
      lifeline_.guard([this, app](const Status& kept) {
        if (kept) {
          ++staging_->count;
          log_.info(fmt::format("{}: {} lies ready.", app.label.text, *app.newVersion));
        } else {
          log_.error(fmt::format("{}: not staged: {}", app.label.text, kept.error().text));
          s_.staged.dropPartial(app.label);
        }
        next();
      }));
}

void Stager::finish() {
  auto staging = std::exchange(staging_, nullptr);
  if (staging->count > 0) log_.info(fmt::format("Staged {} installer(s).", staging->count));
  s_.main.post(std::move(staging->done));
}

void Stager::stop(std::string_view why) {
  if (!staging_ || !staging_->stopping.empty()) return;
  staging_->stopping = why;
  if (!staging_->child) return;
  staging_->child->terminate();
  staging_->stopGrace = s_.main.after(kToolStopGrace, [this] {
    if (staging_ && staging_->child) staging_->child->kill();
  });
}

}  // namespace corvane
