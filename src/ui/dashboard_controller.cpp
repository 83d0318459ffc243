#include "ui/dashboard_controller.h"

#include <algorithm>

#include "core/records/enumerations.h"

namespace corvane::ui {
namespace {

// Dates are shown relative to now as well, so the page is looked at again this often.
constexpr Duration kDateRefresh = 60s;

}  // namespace

DashboardController::DashboardController(StatusViewModel& model, const WorkflowServices& services)
    : model_(model), services_(services), bridge_(actions()) {
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
                                     .watchpoint = std::nullopt,
                                     .expanded = expanded}));
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
  return {.discoverInstalledApps = [this] { model_.discoverInstalledApps(); },
          .checkForUpdates = [this] { model_.checkForUpdates(); },
          .updateAll = [this] { services_.updateAll.updateAll(DeferralPromptHost::dashboard); },
          .updateApp = [this](const std::string& label) { updateApp(label); },
          .recheck = [this](const std::string& label) { model_.forceRecheck(Label(label)); },
          .recheckAll = [this] { model_.forceRecheckAllAlerts(); },
          .toggleHistory = [this](const std::string& label) { toggleHistory(Label(label)); },
          .setFilter =
              [this](const std::string& mode) {
                if (const auto filter = caseFromRaw<FilterMode>(mode)) model_.setFilterMode(*filter);
              },
          .setUpHelper = [this] { setUpHelper(); },
          .openHelperSettings = [this] { services_.installation.openLoginItemsSettings(); },
          .resetHelper = [this] { setUpHelper(); }};
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

void DashboardController::setUpHelper() {
  if (services_.installation.status() == HelperStatus::enabled)
    (void)services_.installation.kickstartRegisteredDaemon();
  else if (const auto registered = services_.installation.registerHelper(); !registered)
    services_.log.write(LogLevel::error, "Corvane: Helper registration failed: " + registered.error().text);
  model_.refreshHelperState(true);
}

}  // namespace corvane::ui
