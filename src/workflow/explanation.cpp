// One application: the rules in their order, up to the one that decides.
#include "workflow/explanation.h"

#include <algorithm>
#include <utility>

#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "core/discovery/label_patterns.h"
#include "core/policies/installomator_exit_code.h"
#include "core/policies/running_bundles.h"
#include "workflow/explanation_parts.h"

namespace corvane {

namespace {

using namespace explained;
using Rule = ExplainedRule;
using Verdict = ExplainedVerdict;

std::optional<std::string> matchingPattern(const std::vector<std::string>& patterns, const Label& label) {
  const auto found =
      std::ranges::find_if(patterns, [&](const auto& pattern) { return matchesLabelPattern(pattern, label.text); });
  return found == patterns.end() ? std::nullopt : std::optional(*found);
}

std::string matchText(const std::optional<std::string>& pattern) {
  return pattern ? localized("\"{}\" fits the label.", *pattern) : std::string();
}

// Answers for its former name too, as far as that one counts.
constexpr std::string_view kIgnoredLabels = "IgnoredLabels";

// The steps that ask the settings about the label alone.
class Walk {
 public:
  Walk(Label label, std::string name, const ExplanationFacts& facts)
      : facts_(facts), config_(*facts.apps.config), out_{.label = std::move(label), .name = std::move(name)} {}

  // Whether the settings leave the label out; then nothing else is asked.
  bool isLeftOut(const AppInfo* app) {
    const auto& label = out_.label;
    const auto pattern = matchingPattern(config_.ignoredLabels, label);
    if (AppDiscoveryService::isIgnoredLabel(label, std::nullopt, config_))
      return decide(Verdict::ignored, step(facts_, Rule::ignored, true, matchText(pattern), kIgnoredLabels),
                    localized("The settings leave this label out."));
    if (AppDiscoveryService::isHiddenSelfUpdateLabel(label, config_))
      return decide(
          Verdict::ignored,
          step(facts_, Rule::ignored, true, localized("This label is the program's own."),
               config_.selfUpdateEnabled ? "SelfUpdateEnabled" : "DiscoverSelfUpdateLabel"),
          localized(config_.selfUpdateEnabled ? toLocalize("The program updates itself.")
                                              : toLocalize("The settings keep the program itself off the list.")));
    // What is left of the rules that drop an application is its path.
    if (app != nullptr && AppDiscoveryService::droppingIgnoredApps({*app}, config_).empty())
      return decide(Verdict::ignored, step(facts_, Rule::ignored, true, app->appPath.value_or(""), "IgnoreFilePaths"),
                    localized("The settings leave out applications at this path."));
    add(step(facts_, Rule::ignored, false,
             pattern ? localized("\"{}\" fits the label, but it is required or optional too.", *pattern) : "",
             kIgnoredLabels));
    const bool required = AppDiscoveryService::isRequiredLabel(label, std::nullopt, config_);
    const bool optional = AppDiscoveryService::isOptionalLabel(label, std::nullopt, config_);
    add(step(facts_, Rule::required, required, matchText(matchingPattern(config_.requiredLabels, label)),
             "RequiredLabels"));
    add(step(facts_, Rule::optional, optional, matchText(matchingPattern(config_.optionalLabels, label)),
             "OptionalLabels"));
    return false;
  }

  // Whether the application is one that is never updated here.
  bool isLeftAlone(const AppInfo& app) {
    const auto unknown = localized("unknown");
    if (app.teamIDMismatch)
      return decide(Verdict::ignored,
                    step(facts_, Rule::signature, true,
                         localized("Expected {}, found {}.", app.expectedTeamID.value_or(unknown),
                                   app.bundleTeamID.value_or(unknown))),
                    localized("It is signed by another vendor than its label expects, so it is never updated."));
    add(step(facts_, Rule::signature, false));
    constexpr auto kOptions = "InstallomatorOptions";
    if (isExcludedAppStoreApp(app, facts_.apps))
      return decide(
          Verdict::ignored,
          step(facts_, Rule::appStore, true,
               localized("A copy of the App Store is left alone unless IGNORE_APP_STORE_APPS=yes."), kOptions),
          localized("The App Store updates this copy."));
    add(step(facts_, Rule::appStore, false, {}, kOptions));
    return false;
  }

  // Whether there is nothing to install, or nobody knows.
  bool needsNothing(const AppInfo& app) {
    if (app.updateCheckFailed)
      return decide(Verdict::waiting,
                    step(facts_, Rule::checked, false,
                         app.updateCheckFailureReason && !app.updateCheckFailureReason->empty()
                             ? localized("The last check failed: {}", *app.updateCheckFailureReason)
                             : localized("The last check failed.")),
                    localized("Its latest version could not be looked up."));
    const bool needed = appNeedsUpdate(app, facts_.apps);
    if (!app.newVersion && !needed)
      return decide(Verdict::waiting, step(facts_, Rule::checked, false, localized("It was not checked yet.")),
                    localized("Its latest version is not known yet."));
    add(step(facts_, Rule::checked, app.newVersion.has_value(),
             app.newVersion ? localized("The latest version is {}.", *app.newVersion) : std::string()));

    const bool reinstall = isForcedReinstallPending(app, facts_.apps);
    auto version = step(facts_, Rule::newerVersion, needed && !reinstall, versionDetail(app),
                        app.isInstalled() ? "VersionComparisonMethod" : "RequiredLabels");
    if (reinstall) {
      add(std::move(version));
      add(step(facts_, Rule::reinstall, true, localized("No install of it is recorded in this cycle."),
               "InstallomatorOptions"));
      return false;
    }
    if (needed) {
      add(std::move(version));
      return false;
    }
    return decide(Verdict::upToDate, std::move(version), upToDateReason(app));
  }

  // Whether a pending update is not for now.
  bool isPutAside(const AppInfo& app) {
    const auto& label = app.label;
    if (const auto record = heldFailureRecord(label, facts_.apps))
      return decide(Verdict::held,
                    step(facts_, Rule::held, true,
                         localized(record->count == 1 ? toLocalize("{} failure, the last one {}.")
                                                      : toLocalize("{} failures in a row, the last one {}."),
                                   record->count, facts_.moment(record->lastFailureAt))),
                    localized("Its update failed too often, so it is skipped until the next cycle or version."));
    add(step(facts_, Rule::held, false));
    if (facts_.apps.cycleComplete) {
      const bool setAside = isHeldBack(label, facts_.apps);
      return decide(Verdict::waiting,
                    step(facts_, Rule::cycleComplete, true,
                         setAside ? localized("A failed Update All has set it aside.") : std::string(),
                         setAside ? "WorkflowUpdateAllErrorCompletesPatching" : ""),
                    localized("This cycle is complete, so the update waits for the next one."));
    }
    add(step(facts_, Rule::cycleComplete, false));
    return false;
  }

  void tellPending(const AppInfo& app) {
    const auto failed = latestFailedReceipt(app, facts_.apps);
    add(step(facts_, Rule::lastUpdateFailed, failed.has_value(), failed ? failureDetail(*failed) : std::string()));
    add(step(facts_, Rule::open, facts_.pending.openLabels.contains(app.label)));
    const auto silence = silenceOf(app.label, facts_);
    add(step(facts_, Rule::patchedSilently, silence.obstacle.empty(), silence.obstacle, silence.key));
    out_.verdict = Verdict::pending;
    out_.reason = reasonOfPending(app);
    tellOutlook(out_, facts_);
  }

  Explanation taken() && { return std::move(out_); }

 private:
  void add(ExplanationStep step) { out_.steps.push_back(std::move(step)); }

  // Ends the walk.
  bool decide(Verdict verdict, ExplanationStep step, std::string reason) {
    step.decides = true;
    out_.verdict = verdict;
    out_.reason = std::move(reason);
    out_.prompt = localized("No prompt asks about it: only pending updates are asked about.");
    tellWhatChangesIt(step.rule);
    add(std::move(step));
    return true;
  }

  void tellWhatChangesIt(Rule rule) {
    const auto nextCycle = facts_.cycle.nextCycleStartDate;
    switch (rule) {
      case Rule::held:
        out_.next = nextCycle ? localized(
                                    "It is tried again after the next cycle starts, {}, or when a new version comes "
                                    "out.",
                                    facts_.moment(*nextCycle))
                              : localized("It is tried again in the next cycle, or when a new version comes out.");
        out_.nextAt = nextCycle;
        return;
      case Rule::cycleComplete:
        out_.next = nextCycle
                        ? localized("It is pending again when the next cycle starts, {}.", facts_.moment(*nextCycle))
                        : localized("It is pending again when the next cycle starts.");
        out_.nextAt = nextCycle;
        return;
      case Rule::checked:
      case Rule::newerVersion:
        out_.next = facts_.lastUpdateCheck ? localized("The next check for updates asks again; the last one was {}.",
                                                       facts_.moment(*facts_.lastUpdateCheck))
                                           : localized("The first check for updates asks for its latest version.");
        return;
      case Rule::signature:
        out_.next = localized("Nothing happens until a copy that its vendor signed is installed.");
        return;
      case Rule::appStore:
        out_.next = localized("Nothing happens here; the App Store looks after it.");
        return;
      default:
        out_.next = localized("Nothing happens until the settings change.");
    }
  }

  [[nodiscard]] std::string versionDetail(const AppInfo& app) const {
    if (!app.isInstalled())
      return localized(isNeeded(app) ? toLocalize("It is not installed, and required.")
                                     : toLocalize("It is not installed, and nothing requires it."));
    const auto installed = app.displayCurrentVersion().value_or(localized("unknown"));
    return localized("Installed is {}, the latest is {}.", installed, app.newVersion.value_or(localized("unknown")));
  }
  [[nodiscard]] bool isNeeded(const AppInfo& app) const { return appNeedsUpdate(app, facts_.apps); }

  [[nodiscard]] std::string upToDateReason(const AppInfo& app) const {
    if (!app.isInstalled()) return localized("It is not installed, and nothing requires it.");
    return localized("The installed version satisfies the latest one.");
  }

  [[nodiscard]] std::string reasonOfPending(const AppInfo& app) const {
    if (!app.isInstalled()) return localized("It is required and not installed.");
    if (isForcedReinstallPending(app, facts_.apps))
      return localized("It is required and is installed again once in every cycle.");
    return localized("Version {} is newer than the installed one.", app.newVersion.value_or(localized("unknown")));
  }

  [[nodiscard]] std::string failureDetail(const PatchingReceipt& receipt) const {
    const auto detail =
        InstallomatorExitCode::detail(receipt.installomatorExitCode, receipt.usedStagedInstaller.value_or(false));
    return localized("{}, {}.", detail.shortName, facts_.moment(receipt.timestamp));
  }

  const ExplanationFacts& facts_;
  const CorvaneConfiguration& config_;
  Explanation out_;
};

}  // namespace

Explanation explain(const AppInfo& app, const ExplanationFacts& facts) {
  Walk walk(app.label, app.displayName(), facts);
  if (!walk.isLeftOut(&app) && !walk.isLeftAlone(app) && !walk.needsNothing(app) && !walk.isPutAside(app))
    walk.tellPending(app);
  return std::move(walk).taken();
}

std::optional<Explanation> explainUnlisted(const Label& label, const ExplanationFacts& facts) {
  Walk walk(label, {}, facts);
  if (!walk.isLeftOut(nullptr)) return std::nullopt;
  return std::move(walk).taken();
}

std::string explanationText(const Explanation& explanation) {
  std::string text;
  if (explanation.verdict) {
    const auto& label = explanation.label.text;
    text +=
        explanation.name.empty() || explanation.name == label ? label : fmt::format("{} ({})", explanation.name, label);
    text += fmt::format(": {}\n{}\n", localized(displayText(*explanation.verdict)), explanation.reason);
  }
  const auto yes = localized("yes");
  const auto no = localized("no");
  const auto width = std::max(yes.size(), no.size());
  std::string lines;
  for (const auto& step : explanation.steps) {
    lines += fmt::format("  {:<{}}  {}", step.holds ? yes : no, width, localized(displayText(step.rule)));
    if (!step.detail.empty()) lines += ": " + step.detail;
    if (!step.key.empty()) lines += fmt::format(" [{}, {}]", step.key, sourceName(step.source));
    lines += "\n";
  }
  if (!lines.empty()) text += (text.empty() ? "" : "\n") + lines;
  text += fmt::format("\n{}\n{}\n", explanation.prompt, explanation.next);
  return text;
}

}  // namespace corvane
