// Why an application is pending, held, waiting, ignored or up to date, why there is or is no prompt now, and what
// comes next: the rules in the order in which they are asked, each with the setting that decided. Pure functions of
// facts taken once; whatever a predicate answers is asked of that predicate.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/localizable.h"
#include "core/preferences/setting_values.h"
#include "core/records/deferral_records.h"
#include "core/records/enumerations.h"
#include "workflow/open_apps_snapshot.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Where an application stands. Exactly one holds.
enum class ExplainedVerdict {
  pending,  // it would be asked about or updated now
  held,     // left alone after failures, until the next cycle or version
  waiting,  // for its latest version, or for the next cycle
  ignored,  // never updated here: by the settings, its signature or the App Store
  upToDate
};

template <>
struct CaseNames<ExplainedVerdict> {
  static constexpr auto all =
      std::to_array<CaseName<ExplainedVerdict>>({{ExplainedVerdict::pending, "pending", toLocalize("Pending")},
                                                 {ExplainedVerdict::held, "held", toLocalize("Held")},
                                                 {ExplainedVerdict::waiting, "waiting", toLocalize("Waiting")},
                                                 {ExplainedVerdict::ignored, "ignored", toLocalize("Ignored")},
                                                 {ExplainedVerdict::upToDate, "upToDate", toLocalize("Up to Date")}});
};

enum class ExplainedRule {
  // of one application, in this order; those behind the one that decides are not asked
  ignored,
  required,
  optional,
  signature,
  appStore,
  checked,
  newerVersion,
  reinstall,
  held,
  cycleComplete,
  lastUpdateFailed,
  open,
  patchedSilently,
  // of all
  pending,
  deadline,
  deferralsLeft,
  focus,
  businessHours,
  helper,
  backgroundPass,
  armed
};

// The raw name stands in JSON; the display text is the question as people read it.
template <>
struct CaseNames<ExplainedRule> {
  static constexpr auto all = std::to_array<CaseName<ExplainedRule>>(
      {{ExplainedRule::ignored, "ignored", toLocalize("Ignored by the settings")},
       {ExplainedRule::required, "required", toLocalize("Required")},
       {ExplainedRule::optional, "optional", toLocalize("Optional")},
       {ExplainedRule::signature, "signature", toLocalize("Signed by another vendor")},
       {ExplainedRule::appStore, "appStore", toLocalize("Updated by the App Store")},
       {ExplainedRule::checked, "checked", toLocalize("Latest version known")},
       {ExplainedRule::newerVersion, "newerVersion", toLocalize("Needs the latest version")},
       {ExplainedRule::reinstall, "reinstall", toLocalize("Required reinstall")},
       {ExplainedRule::held, "held", toLocalize("Held after failures")},
       {ExplainedRule::cycleComplete, "cycleComplete", toLocalize("Cycle complete")},
       {ExplainedRule::lastUpdateFailed, "lastUpdateFailed", toLocalize("Last update failed")},
       {ExplainedRule::open, "open", toLocalize("Open now")},
       {ExplainedRule::patchedSilently, "patchedSilently", toLocalize("Updated silently")},
       {ExplainedRule::pending, "pending", toLocalize("Updates pending")},
       {ExplainedRule::deadline, "deadline", toLocalize("Deadline reached")},
       {ExplainedRule::deferralsLeft, "deferralsLeft", toLocalize("Deferrals left")},
       {ExplainedRule::focus, "focus", toLocalize("Not to be disturbed")},
       {ExplainedRule::businessHours, "businessHours", toLocalize("Business hours now")},
       {ExplainedRule::helper, "helper", toLocalize("Root helper ready")},
       {ExplainedRule::backgroundPass, "backgroundPass", toLocalize("Background pass")},
       {ExplainedRule::armed, "armed", toLocalize("Something armed")}});
};

struct ExplanationStep {
  ExplainedRule rule = ExplainedRule::ignored;
  bool holds = false;
  bool decides = false;  // the verdict follows from this one
  std::string detail;    // localised; may be empty
  std::string key;       // the setting behind it; empty where none is
  ValueSource source = ValueSource::fallback;
  friend bool operator==(const ExplanationStep&, const ExplanationStep&) = default;
};

struct Explanation {
  Label label;                              // empty: of all
  std::string name;                         // of the application; empty where none is known
  std::optional<ExplainedVerdict> verdict;  // absent of all
  std::string reason;                       // one sentence: what decided
  std::vector<ExplanationStep> steps;
  std::string prompt;  // why there is a prompt now, or none
  std::string next;    // what happens next and when
  std::optional<Date> nextAt;
  friend bool operator==(const Explanation&, const Explanation&) = default;
};

// Taken once; one set serves any number of explanations of the same moment.
struct ExplanationFacts {
  AppFacts apps;
  OpenAppsSnapshot pending;
  Date now{};
  std::optional<PendingWatchpoint> armed;
  std::optional<Date> due;  // armed for a moment that has passed, and not acted upon yet
  CadenceState cycle;
  DeferralInfo deferrals;
  DeferralDeadlineStatus deadlineStatus = DeferralDeadlineStatus::normal;
  std::optional<Date> hardDeadline;
  std::string deadlineReason;               // which limit is reached; told only where one is
  std::optional<std::string> limitSummary;  // what is left of the limits, as the prompt words it
  std::int64_t toldOpenApps = 0;            // of how many open applications the user knows
  bool showsPrompt = false;
  bool isPatching = false;
  bool isLoading = false;
  bool inFocus = false;         // Focus, Do Not Disturb, or a display that a presentation keeps awake
  bool focusMayPutOff = false;  // a limit of focus deferrals is set, and none is reached
  bool onACPower = true;
  bool helperOperational = false;
  bool installomatorAvailable = false;
  bool hasBusinessHours = false;
  std::optional<Date> businessHoursEnd;  // of the window around now; absent outside of one
  std::optional<Date> lastUpdateCheck;
  std::optional<Date> lastBackgroundPass;  // of the scheduler that the settings name
  // Where the value of a key comes from.
  std::function<ValueSource(std::string_view key)> sourceOf;
  // A moment inside a sentence, as the caller words moments.
  std::function<std::string(Date)> moment;
};

// Reads the stores and looks at processes, focus and power once; writes nothing. Main thread.
[[nodiscard]] ExplanationFacts explanationFacts(const StatusViewModel& model, const WorkflowServices& services,
                                                std::function<std::string(Date)> moment);

[[nodiscard]] Explanation explain(const AppInfo& app, const ExplanationFacts& facts);

// Of a label under which no application is listed: absent unless the settings leave it out, for nothing else is known
// of it then.
[[nodiscard]] std::optional<Explanation> explainUnlisted(const Label& label, const ExplanationFacts& facts);

// Of everything: cycle, deadline, deferrals, focus, business hours, background pass and what is armed.
[[nodiscard]] Explanation explainAll(const ExplanationFacts& facts);

// The whole as plain text, a line a rule, as it is copied and printed.
[[nodiscard]] std::string explanationText(const Explanation& explanation);

}  // namespace corvane
