#include "ui/dashboard_controller.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/records/enumerations.h"

namespace corvane::ui {
namespace {

// Dates are shown relative to now as well, so the page is looked at again this often.
constexpr Duration kDateRefresh = 60s;

}  // namespace

DashboardController::DashboardController(StatusViewModel& model, const WorkflowServices& services, PromptBridge& prompt,
                                         WindowActions host)
    : model_(model), services_(services), host_(std::move(host)), bridge_(actions(), prompt) {
  changes_ = model_.observe([this] { refresh(); });
  minutes_ = services_.main.every(
      kDateRefresh, [this] { refresh(); }, kDateRefresh / 10);
  refresh();
}

void DashboardController::refresh() {
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
                                     .now = services_.clock.now(),
                                     .title = title,
                                     .helperStatus = services_.installation.status(),
                                     .statusLine = model_.statusLine(),
                                     .statusSymbol = std::string(model_.statusSymbolName()),
                                     .watchpoint = model_.pendingWatchpoint(),
                                     .expanded = expanded,
                                     .selfUpdateDismissed = selfUpdate && selfUpdate == dismissedSelfUpdate_,
                                     .capabilities = {.updatesItself = static_cast<bool>(host_.updateItself)}}));
}

std::map<Label, ExpandedHistory> DashboardController::expandedHistories() {
  std::map<Label, ExpandedHistory> histories;
  for (const auto& label : expandedReceiptLabels_) {
    histories.emplace(label, ExpandedHistory{.receipts = model_.receipts(label, kExpandedHistoryLimit),
                                             .events = model_.deferralEvents(label, kExpandedHistoryLimit)});
  }
  return histories;
}

DashboardActions DashboardController::actions() {
  return {.discoverInstalledApps =
              [this] { whenIdle("discoverInstalledApps", [this] { model_.discoverInstalledApps(); }); },
          .checkForUpdates = [this] { whenIdle("checkForUpdates", [this] { model_.checkForUpdates(); }); },
          .updateAll = [this] { model_.updateAll(DeferralPromptHost::dashboard); },
          .updateApp = [this](const std::string& label) { updateApp(label); },
          .recheck = [this](const std::string& label) { model_.forceRecheck(Label(label)); },
          .recheckAll = [this] { model_.forceRecheckAllAlerts(); },
          .toggleHistory = [this](const std::string& label) { toggleHistory(Label(label)); },
          .setFilter =
              [this](const std::string& mode) {
                if (const auto filter = caseFromRaw<FilterMode>(mode)) model_.setFilterMode(*filter);
              },
          .setUpHelper = [this] { model_.registerHelper(); },
          .openHelperSettings = [this] { services_.installation.openLoginItemsSettings(); },
          .resetHelper = [this] { model_.resetHelper(false); },
          .updateItself = host_.updateItself,
          .dismissSelfUpdate = [this] { dismissSelfUpdate(); }};
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

// A newer version shows the banner again.
void DashboardController::dismissSelfUpdate() {
  dismissedSelfUpdate_ = model_.fields().selfUpdate.selfUpdateAvailable;
  refresh();
}

}  // namespace corvane::ui
