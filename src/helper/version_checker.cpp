#include "helper/version_checker.h"

#include <fmt/format.h>
#include <unistd.h>

#include "base/atomic_file.h"
#include "core/preferences/options_codec.h"
#include "helper/scratch_folder.h"
#include "helper/tool_output.h"

namespace corvane {
namespace {

// The tool runs as if to install, but stops before it does; a download is all that it costs.
ChildSpec toolQuestionChild(const std::filesystem::path& tool, const Label& label, const std::filesystem::path& home,
                            std::optional<std::pair<uid_t, gid_t>> runAs) {
  return {.executable = tool.string(),
          .arguments = {label.text, "DEBUG=2", "BLOCKING_PROCESS_ACTION=ignore", "NOTIFY=silent", "updateTool=\"\""},
          .environment = lookerEnvironment(home),
          .folder = home.string(),
          .runAs = runAs,
          .timeLimit = kToolQuestionLimit,
          .outputLimit = 256U << 10U,
          .endsGroup = true,
          .bounds = kToolQuestionBounds};
}

}  // namespace

struct VersionChecker::Check {
  VersionAnswers answers;
  LabelSet open;
  CheckSetting setting;
  std::optional<ScratchFolder> scratch;
  EvaluationSetting evaluation;
  std::map<Label, std::shared_ptr<ChildHandle>> children;
  Completion<VersionAnswers> done;
  Lease limit;
  bool finished = false;
};

VersionChecker::VersionChecker(Services services, std::optional<std::string> zsh, AccountSource account)
    : s_(services), log_(services.log, "VersionChecker"), zsh_(std::move(zsh)), account_(std::move(account)) {}

VersionChecker::~VersionChecker() {
  for (const auto& check : checks_) {
    for (const auto& [label, child] : check->children) child->kill();
    check->done.abandon();
  }
}

Status VersionChecker::prepareScratch(Check& check, const std::filesystem::path& functions) const {
  const auto account = account_();
  if (!account) return std::unexpected(account.error());
  auto scratch = ScratchFolder::create(*account);
  if (!scratch) return std::unexpected(scratch.error());
  check.evaluation = {.zsh = zsh_.value_or(""),
                      .functions = scratch->path() / "functions.sh",
                      .home = scratch->writable(),
                      .runAs = *account};
  check.scratch = std::move(*scratch);
  const auto text = readFile(functions, 4U << 20U);
  if (!text) {
    // Labels that call none of the functions can still be evaluated.
    log_.warning(fmt::format("The label functions cannot be used: {}", text.error().text));
    return {};
  }
  return writeFileAtomically(check.evaluation.functions, *text, 0644);
}

void VersionChecker::check(std::vector<VersionQuestion> questions, const CheckSetting& setting,
                           Completion<VersionAnswers> done) {
  auto check = std::make_shared<Check>();
  check->setting = setting;
  check->done = std::move(done);
  checks_.insert(check);
  std::vector<VersionQuestion> forChildren;
  for (auto& question : questions) {
    if (question.literal && isBelievableVersion(*question.literal)) {
      check->answers[question.label] = {.version = std::move(question.literal)};
    } else if (isNeverEvaluated(question.label)) {
      check->answers[question.label] =
          versionFailure("This label would change the installed application by being asked for its version");
    } else if (!question.namedInMetadata && !setting.askTool) {
      check->answers[question.label] = {.failureReason = "The label names no version", .notInMetadata = true};
    } else if (check->open.insert(question.label).second) {
      forChildren.push_back(std::move(question));
    }
  }
  if (forChildren.empty()) return finish(check, "");
  if (auto ready = prepareScratch(*check, setting.functions); !ready) {
    log_.error(fmt::format("No label can be evaluated: {}", ready.error().text));
    return finish(check, fmt::format("The helper cannot evaluate labels: {}", ready.error().text));
  }
  check->limit = s_.main.after(kCheckTimeLimit,
                               [this, check] { finish(check, "All labels together took longer than 80 seconds"); });
  for (auto& question : forChildren) {
    const bool byTool = !question.namedInMetadata;
    waiting_.push_back({.check = check, .question = std::move(question), .byTool = byTool});
  }
  startWaiting();
}

void VersionChecker::startWaiting() {
  while (running_ < s_.childrenAtOnce && !waiting_.empty()) {
    const auto job = std::move(waiting_.front());
    waiting_.pop_front();
    if (job.check->finished) continue;
    if (job.byTool)
      startToolQuestion(job);
    else
      startEvaluation(job);
  }
}

void VersionChecker::startEvaluation(const Job& job) {
  if (!zsh_) return settle(job.check, job.question.label, versionFailure("This machine has no zsh"));
  auto fragment = readFile(job.question.fragment, kEvaluatedFragmentLimit);
  if (!fragment || fragment->find('\0') != std::string::npos)
    return settle(job.check, job.question.label, versionFailure("The label's file cannot be read"));
  const auto marker = "corvane-" + s_.entropy.uuid().text() + ":";
  start(job, evaluationChild(job.check->evaluation, job.question.label, std::move(*fragment), marker), nullptr,
        [marker](const Result<ChildExit>& exit) { return readEvaluation(exit, marker); });
}

void VersionChecker::startToolQuestion(const Job& job) {
  auto found = std::make_shared<std::optional<std::string>>();
  const std::weak_ptr<Check> weak = job.check;
  auto onLine = [found, weak, label = job.question.label](std::string_view line) {
    if (*found) return;
    *found = latestVersionIn(line);
    if (!*found) return;
    const auto check = weak.lock();
    const auto child = check ? check->children.find(label) : decltype(check->children.find(label)){};
    if (check && child != check->children.end()) child->second->kill();
  };
  start(job,
        toolQuestionChild(*job.check->setting.askTool, job.question.label, job.check->evaluation.home,
                          job.check->evaluation.runAs),
        std::move(onLine), [found](const Result<ChildExit>& exit) -> VersionAnswer {
          if (*found) return {.version = *found};
          if (!exit) return versionFailure(fmt::format("Installomator could not be asked: {}", exit.error().text));
          return versionFailure("Installomator told no version");
        });
}

void VersionChecker::start(const Job& job, ChildSpec spec, std::function<void(std::string_view)> onLine,
                           std::move_only_function<VersionAnswer(const Result<ChildExit>&)> read) {
  ++running_;
  job.check->children[job.question.label] =
      s_.children.start(std::move(spec), std::move(onLine),
                        lifeline_.guard([this, job, read = std::move(read)](Result<ChildExit> exit) mutable {
                          if (exit && !exit->errors.empty())
                            log_.verbose(fmt::format("{}: {}", job.question.label.text, exit->errors));
                          childEnded(job, read(exit));
                        }));
}

void VersionChecker::childEnded(const Job& job, VersionAnswer answer) {
  --running_;
  job.check->children.erase(job.question.label);
  const bool askTool = answer.notInMetadata && !job.byTool && job.check->setting.askTool;
  if (askTool && !job.check->finished)
    waiting_.push_back({.check = job.check, .question = job.question, .byTool = true});
  else
    settle(job.check, job.question.label, std::move(answer));
  startWaiting();
}

void VersionChecker::settle(const std::shared_ptr<Check>& check, const Label& label, VersionAnswer answer) {
  if (check->finished || check->open.erase(label) == 0) return;
  check->answers[label] = std::move(answer);
  if (check->open.empty()) finish(check, "");
}

void VersionChecker::finish(const std::shared_ptr<Check>& check, std::string_view reasonForTheRest) {
  if (std::exchange(check->finished, true)) return;
  for (const auto& label : check->open) check->answers[label] = versionFailure(reasonForTheRest);
  tellFailures(check->answers);
  check->limit.release();
  // The children's ends are still counted when they come, so the scratch folder must outlive them.
  for (const auto& [label, child] : check->children) child->kill();
  checks_.erase(check);
  s_.main.post([check] { check->done(std::move(check->answers)); });
}

// One line a check: a vendor that is down for a week is no news each time, but must be found in the log.
void VersionChecker::tellFailures(const VersionAnswers& answers) const {
  std::vector<std::string> failures;
  for (const auto& [label, answer] : answers)
    if (!answer.version) failures.push_back(fmt::format("{} ({})", label.text, answer.failureReason));
  if (!failures.empty())
    log_.info(fmt::format("{} label(s) gave no version: {}.", failures.size(), fmt::join(failures, ", ")));
}

void VersionChecker::stop() {
  waiting_.clear();
  for (const auto& check : std::set(checks_)) finish(check, "The helper is stopping");
}

}  // namespace corvane
