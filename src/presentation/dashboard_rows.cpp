// One application of the list: what it says of itself and what can be done with it.
#include <algorithm>

#include "core/policies/installomator_exit_code.h"
#include "presentation/dashboard_parts.h"
#include "workflow/app_predicates.h"
#include "workflow/status_texts.h"

namespace corvane {

namespace {

// What the predicates say of the application, asked once.
struct RowFacts {
  const AppInfo& app;
  bool hasUpdate;
  bool isForcedReinstall;
  bool leavesUpdatesToAppStore;
  std::optional<PatchingReceipt> installFailure;
  std::optional<LabelFailureHistory::Record> failureLimitHold;

  RowFacts(const AppInfo& info, const AppFacts& facts)
      : app(info),
        hasUpdate(appNeedsUpdate(info, facts)),
        isForcedReinstall(isForcedReinstallPending(info, facts)),
        leavesUpdatesToAppStore(isExcludedAppStoreApp(info, facts)),
        installFailure(latestFailedReceipt(info, facts)),
        failureLimitHold(heldFailureRecord(info.label, facts)) {}

  [[nodiscard]] bool hasFailed() const { return failureLimitHold || installFailure; }
};

std::string versionText(const AppInfo& app, const PageTexts& texts) {
  if (const auto version = app.displayCurrentVersion()) return texts.localized("Installed: {}", *version);
  return app.isInstalled() ? std::string() : texts.localized("Not installed (required)");
}

struct StatusLine {
  std::string text;
  ColorRole color = ColorRole::secondary;
  std::string failure;
};

StatusLine statusLine(const RowFacts& row, const PageTexts& texts) {
  const auto latest = row.app.displayNewVersion();
  if (row.app.teamIDMismatch) return {texts.localized("Signature mismatch—won't update"), ColorRole::orange, {}};
  if (row.leavesUpdatesToAppStore) return {texts.localized("Updated by the App Store"), ColorRole::secondary, {}};
  if (row.isForcedReinstall) return {texts.localized("Required reinstall"), ColorRole::orange, {}};
  if (!latest && row.app.updateCheckFailed)
    return {texts.localized("Couldn't retrieve latest version"), ColorRole::orange, {}};
  if (!latest) return {};
  StatusLine line{.text = texts.localized("Latest: {}", *latest),
                  .color = row.hasUpdate ? ColorRole::orange : ColorRole::secondary};
  if (row.failureLimitHold)
    line.failure = texts.localized("Skipped until the next cycle");
  else if (row.installFailure)
    line.failure = texts.localized("Last update failed");
  return line;
}

struct StatusIcon {
  std::string symbol;
  ColorRole color = ColorRole::clear;
  std::string help;
};

std::string mismatchHelp(const AppInfo& app, const PageTexts& texts) {
  const auto unknown = texts.localized("unknown");
  return texts.localized(
      "This bundle is signed by a different vendor than the Installomator label expects (expected {}, found {}). "
      "Corvane "
      "won't auto-update sideloaded or third-party-signed builds.",
      app.expectedTeamID.value_or(unknown), app.bundleTeamID.value_or(unknown));
}

// `text` and, behind `between`, the reason of the last failed check when there is one.
std::string withLastFailure(std::string text, std::string_view between, const AppInfo& app, const PageTexts& texts) {
  if (!app.updateCheckFailureReason || app.updateCheckFailureReason->empty()) return text;
  return text + std::string(between) + texts.localized("Last failure: {}", *app.updateCheckFailureReason);
}

std::string failureHelp(const RowFacts& row, const DashboardInputs& inputs, const PageTexts& texts) {
  if (row.failureLimitHold) {
    return texts.localized(
        "Corvane stopped trying after {} failed updates. It tries again after the next cycle starts or when a new "
        "version "
        "is released. Click Update to try now.",
        row.failureLimitHold->count);
  }
  if (!row.installFailure) return {};
  const auto& receipt = *row.installFailure;
  const auto detail =
      InstallomatorExitCode::detail(receipt.installomatorExitCode, receipt.usedStagedInstaller.value_or(false));
  return texts.localized("The last update failed ({}) {}", detail.shortName,
                         momentText(receipt.timestamp, inputs.now, inputs.locale));
}

StatusIcon statusIcon(const RowFacts& row, const DashboardInputs& inputs, const PageTexts& texts) {
  constexpr auto kWarning = "exclamationmark.triangle.fill";
  if (row.app.teamIDMismatch) return {"lock.shield.fill", ColorRole::orange, mismatchHelp(row.app, texts)};
  if (row.leavesUpdatesToAppStore) {
    return {
        "bag.fill", ColorRole::secondary,
        texts.localized("Updated by the App Store. Corvane leaves this copy alone unless IGNORE_APP_STORE_APPS=yes.")};
  }
  if (row.app.updateCheckFailed) {
    auto help = texts.localized(
        "Corvane couldn't determine the latest version. The Update Now action is unavailable until a re-check "
        "succeeds.");
    return {kWarning, ColorRole::orange, withLastFailure(std::move(help), "\n\n", row.app, texts)};
  }
  if (!row.app.newVersion) return {};
  if (!row.hasUpdate) return {"checkmark.circle.fill", ColorRole::green, {}};
  return {kWarning, row.hasFailed() ? ColorRole::orange : ColorRole::yellow, failureHelp(row, inputs, texts)};
}

// What the run that is out does with this application; empty when it has no part in it or is done with it.
std::string progressText(const AppInfo& app, const StatusFields& fields, const PageTexts& texts) {
  const auto& progress = fields.patch.progress;
  if (!fields.gate.isPatching || !progress) return {};
  const auto& labels = progress->labels;
  const auto place = std::ranges::find(labels, app.label);
  if (place == labels.end()) return {};
  const auto current = progress->currentLabel.value_or(labels.front());
  if (current == app.label) {
    const auto& prompt = fields.blockingPrompt.blockingPromptAppName;
    return prompt && !prompt->empty() ? waitingForQuitText(*prompt) : texts.localized("Updating…");
  }
  const bool isDone = place - labels.begin() < progress->done;
  return isDone ? std::string() : texts.localized("Waiting…");
}

std::string spokenText(const AppStatusRow& row) {
  std::string text = row.name;
  for (const auto* part : {&row.versionText, &row.statusText, &row.failureText, &row.progressText})
    if (!part->empty()) text += ", " + *part;
  return text;
}

}  // namespace

AppStatusRow makeAppStatusRow(const AppInfo& app, const DashboardInputs& inputs, const PageTexts& texts) {
  const RowFacts facts(app, inputs.facts);
  const bool busy = isBusy(inputs.fields);
  auto line = statusLine(facts, texts);
  auto icon = statusIcon(facts, inputs, texts);
  const auto expanded = inputs.expanded.find(app.label);

  AppStatusRow row;
  row.key = app.label.text;
  row.name = app.displayName();
  row.monogram = monogramOf(row.name);
  row.iconBundle = app.appPath.value_or("");
  row.versionText = versionText(app, texts);
  row.statusText = std::move(line.text);
  row.statusColor = line.color;
  row.failureText = std::move(line.failure);
  row.showsStatusIcon = true;
  row.statusIcon = std::move(icon.symbol);
  row.statusIconColor = icon.color;
  row.statusIconHelp = std::move(icon.help);
  row.recheck = {
      .text = texts.localized("Re-check"),
      .help = withLastFailure(texts.localized("Re-check the latest available version for this app"), ".\n", app, texts),
      .visible = app.updateCheckFailed,
      .enabled = app.updateCheckFailed && !busy};
  const bool offersUpdate = facts.hasUpdate && !app.teamIDMismatch && !app.updateCheckFailed;
  row.update = {.text = texts.localized("Update"),
                .help = texts.localized("Update this application now"),
                .visible = offersUpdate,
                .enabled = offersUpdate && !busy};
  row.progressText = progressText(app, inputs.fields, texts);
  row.spokenText = spokenText(row);
  row.isExpanded = expanded != inputs.expanded.end();
  row.expanderHelp =
      row.isExpanded ? texts.localized("Hide patch history") : texts.localized("Show recent patch history");
  if (row.isExpanded) fillHistory(row, expanded->second, inputs, texts);
  const auto explained = inputs.explained.find(app.label);
  const bool tellsWhy = explained != inputs.explained.end();
  row.whyButton = {
      .text = texts.localized("Why?"),
      .help = tellsWhy ? texts.localized("Hide why") : texts.localized("Why it is so, and what happens next"),
      .visible = true,
      .enabled = true};
  if (tellsWhy) fillWhy(row, explained->second, texts);
  return row;
}

}  // namespace corvane
