// Finds latest versions: literals at once, all others by children, a few at a time and within limits. Keeps
// nothing between two checks and judges no application.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "core/logging/logging_service.h"
#include "helper/label_evaluation.h"
#include "platform/child_processes.h"
#include "platform/entropy.h"

namespace corvane {

// Children at once, over all checks under way. They wait for pages most of the time, so many more than there are
// processors keep these busy; a child takes some 10 MB while it lives.
inline constexpr std::size_t kChildrenAtOnce = 24;
// A whole check ends by then, so that its asker, who warns after 90 seconds, has the answer before.
inline constexpr Duration kCheckTimeLimit = 80s;
// The tool downloads before it tells a version, so it gets longer than a label. A label that is evaluated in vain first
// and then asked of a tool that hangs is still over before the whole check.
inline constexpr Duration kToolQuestionLimit = 45s;
// It downloads whole installers; more than this does not come through a good line in its time.
inline constexpr ChildBounds kToolQuestionBounds{.memory = kLabelBounds.memory, .fileSize = 4ULL << 30U};
static_assert(kLabelTimeLimit + kToolQuestionLimit < kCheckTimeLimit);

struct VersionQuestion {
  Label label;
  std::optional<std::string> literal;  // what the fragment states as plain text
  bool namedInMetadata = true;         // false: the fragment never sets a version
  std::filesystem::path fragment;
};

using VersionAnswers = std::map<Label, VersionAnswer>;

// Whom children run as: absent for our own account, a failure when there is none that may be used. Then nothing is
// evaluated, and the failure is each label's answer.
using AccountSource = std::function<Result<std::optional<std::pair<uid_t, gid_t>>>()>;

// One check's way of working, from the settings of the moment.
struct CheckSetting {
  std::filesystem::path functions;               // the tool's functions
  std::optional<std::filesystem::path> askTool;  // the tool itself, asked where the metadata names no version
};

// Main thread.
class VersionChecker {
 public:
  struct Services {
    ChildProcesses& children;
    MainQueue& main;
    Entropy& entropy;
    LogSink& log;
    std::size_t childrenAtOnce = kChildrenAtOnce;
  };
  // `zsh`: where the shell lies on this machine; absent when it has none. `account` is asked at each check that needs
  // children.
  VersionChecker(Services services, std::optional<std::string> zsh, AccountSource account);
  ~VersionChecker();

  // `done` runs exactly once, in a later turn, with an answer for each label. Several checks share the children.
  void check(std::vector<VersionQuestion> questions, const CheckSetting& setting, Completion<VersionAnswers> done);

  // Ends all children; checks under way are answered in a later turn with what is known by then.
  void stop();

 private:
  struct Check;
  struct Job {
    std::shared_ptr<Check> check;
    VersionQuestion question;
    bool byTool = false;
  };

  [[nodiscard]] Status prepareScratch(Check& check, const std::filesystem::path& functions) const;
  void startWaiting();
  void startEvaluation(const Job& job);
  void startToolQuestion(const Job& job);
  void start(const Job& job, ChildSpec spec, std::function<void(std::string_view)> onLine,
             std::move_only_function<VersionAnswer(const Result<ChildExit>&)> read);
  void childEnded(const Job& job, VersionAnswer answer);
  void settle(const std::shared_ptr<Check>& check, const Label& label, VersionAnswer answer);
  void finish(const std::shared_ptr<Check>& check, std::string_view reasonForTheRest);
  void tellFailures(const VersionAnswers& answers) const;

  Services s_;
  Logger log_;
  std::optional<std::string> zsh_;
  AccountSource account_;
  std::deque<Job> waiting_;
  std::set<std::shared_ptr<Check>> checks_;
  std::size_t running_ = 0;
  Lifeline lifeline_;
};

}  // namespace corvane
