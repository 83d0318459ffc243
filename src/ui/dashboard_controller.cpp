#include "ui/dashboard_controller.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/records/enumerations.h"
#include "presentation/page_texts.h"
#include "workflow/watchpoint.h"

namespace corvane::ui {
namespace {

// Dates are shown relative to now as well, so the page is looked at again this often.
constexpr Duration kDateRefresh = 60s;

// What is left until then is told in whole minutes; a moment after one has gone, another number stands.
Duration untilItsNextMinute(Date moment, Date now) { return (moment - now) % kDateRefresh + 1ms; }

}  // namespace

DashboardController::DashboardController(StatusViewModel& model, const WorkflowServices& services, PromptBridge& prompt,
                                         WindowActions host, LogBridge* logs, std::function<void()> openSettings)
    : model_(model),
      services_(services),
      host_(std::move(host)),
      bridge_(actions(std::move(openSettings)), prompt, logs),
      setup_(model, services, host_.revealLog) {
  setupChanges_ = setup_.observe([this] { bridge_.setSetupPage(setup_.page()); });
  bridge_.setSetupPage(setup_.page());
  bridge_.setShortcuts(makeShortcutsSheet(PageTexts(AppDisplayTitle(services_.preferences.loadConfiguration()))));
  changes_ = model_.observe([this] { refresh(); });
  refresh();
}

void DashboardController::refresh() {
  const auto now = services_.clock.now();
  const auto watchpoint = model_.pendingWatchpoint();
  const auto armed = watchpoint ? std::optional(momentOf(*watchpoint)) : std::nullopt;
  nextMinute_ = services_.main.after(
      armed ? untilItsNextMinute(*armed, now) : kDateRefresh, [this] { refresh(); },
      armed ? Duration::zero() : kDateRefresh / 10);
  const auto facts = model_.facts();
  const auto listed = model_.filteredApps();
  const auto expanded = expandedHistories();
  const AppDisplayTitle title(facts.config);
  const auto& selfUpdate = model_.fields().selfUpdate.selfUpdateAvailable;
  bridge_.setWindowTitle(toQString(title.current()));
  bridge_.setPage(makeDashboardPage({.fields = model_.fields(),
                                     .facts = facts,
                                     .listed = listed,
                                     .locale = services_.locale,
                                     .now = now,
                                     .title = title,
                                     .helperStatus = services_.installation.status(),
                                     .statusLine = model_.statusLine(),
                                     .statusSymbol = std::string(model_.statusSymbolName()),
                                     .watchpoint = watchpoint,
                                     .expanded = expanded,
                                     .selfUpdateDismissed = selfUpdate && selfUpdate == dismissedSelfUpdate_,
                                     .capabilities = {.updatesItself = static_cast<bool>(host_.updateItself)},
                                     .explained = explanations()}));
}

std::map<Label, ExpandedHistory> DashboardController::expandedHistories() {
  std::map<Label, ExpandedHistory> histories;
  for (const auto& label : expandedReceiptLabels_) {
    histories.emplace(label, ExpandedHistory{.receipts = model_.receipts(label, kExpandedHistoryLimit),
                                             .events = model_.deferralEvents(label, kExpandedHistoryLimit)});
  }
  return histories;
}

// Taken only for rows that tell why: it walks the processes.
std::map<Label, Explanation> DashboardController::explanations() const {
  std::map<Label, Explanation> told;
  if (explainedLabels_.empty()) return told;
  const auto facts = explanationFacts(model_, services_, [this, now = services_.clock.now()](Date moment) {
    return momentText(moment, now, services_.locale);
  });
  for (const auto& label : explainedLabels_)
    if (const auto* app = appWith(model_.fields().inventory.apps, label)) told.emplace(label, explain(*app, facts));
  return told;
}

DashboardActions DashboardController::actions(std::function<void()> openSettings) {
  return {.discoverInstalledApps =
              [this] { whenIdle("discoverInstalledApps", [this] { model_.discoverInstalledApps(); }); },
          .checkForUpdates = [this] { whenIdle("checkForUpdates", [this] { model_.checkForUpdates(); }); },
          .updateAll = [this] { model_.updateAll(DeferralPromptHost::dashboard); },
          .updateApp = [this](const std::string& label) { updateApp(label); },
          .recheck = [this](const std::string& label) { model_.forceRecheck(Label(label)); },
          .recheckAll = [this] { model_.forceRecheckAllAlerts(); },
          .toggleHistory = [this](const std::string& label) { toggleHistory(Label(label)); },
          .toggleWhy = [this](const std::string& label) { toggleWhy(Label(label)); },
          .setFilter =
              [this](const std::string& mode) {
                if (const auto filter = caseFromRaw<FilterMode>(mode)) model_.setFilterMode(*filter);
              },
          .setUpHelper = [this] { model_.registerHelper(); },
          .openHelperSettings = [this] { services_.installation.openLoginItemsSettings(); },
          .resetHelper = [this] { model_.resetHelper(false); },
          .updateItself = host_.updateItself,
          .dismissSelfUpdate = [this] { dismissSelfUpdate(); },
          .setupStep = [this](const std::string& key) { setup_.act(key); },
          .finishSetup = [this] { setup_.finish(); },
          .openSettings = std::move(openSettings)};
}

// The page hears of a start in a later turn: a second click may come before its button is disabled.
void DashboardController::whenIdle(std::string_view name, const std::function<void()>& start) {
  if (model_.isIdle()) return start();
  Logger(services_.log, "StatusDashboardView")
      .info(fmt::format("Skipping {} — another operation is already running", name));
}

void DashboardController::updateApp(const std::string& label) {
  const auto& apps = model_.fields().inventory.apps;
  const auto found = std::ranges::find(apps, Label(label), &AppInfo::label);
  if (found != apps.end()) model_.updateApp(AppInfo(*found));
}

void DashboardController::toggleHistory(const Label& label) {
  if (!expandedReceiptLabels_.erase(label)) expandedReceiptLabels_.insert(label);
  refresh();
}

void DashboardController::toggleWhy(const Label& label) {
  if (!explainedLabels_.erase(label)) explainedLabels_.insert(label);
  refresh();
}

// A newer version shows the banner again.
void DashboardController::dismissSelfUpdate() {
  dismissedSelfUpdate_ = model_.fields().selfUpdate.selfUpdateAvailable;
  refresh();
}

}  // namespace corvane::ui
