#include "workflow/inventory.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/mac_app_store_update_policy.h"
#include "core/policies/patching_cadence_manager.h"
#include "workflow/app_predicates.h"

namespace corvane {

namespace {

std::string_view policyName(ActivationPolicy policy) {
  switch (policy) {
    case ActivationPolicy::regular:
      return "regular";
    case ActivationPolicy::accessory:
      return "accessory";
    case ActivationPolicy::prohibited:
      return "prohibited";
    case ActivationPolicy::unknown:
      break;
  }
  return "unknown";
}

template <class T>
std::vector<T> prefix(const std::vector<T>& all, std::size_t limit) {
  return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(limit, all.size()))};
}

AppFacts::FailureTargets targetsOfFailures(const Apps& apps, const LabelFailureHistory::Records& failures) {
  AppFacts::FailureTargets targets;
  if (failures.empty()) return targets;
  for (const auto& app : apps)
    if (failures.contains(app.label)) targets.emplace(app.label, app.newVersion);
  return targets;
}

}  // namespace

Inventory::Inventory(const RoomContext& context, InventoryFields& fields) : c_(context), fields_(fields) {}

void Inventory::load() {
  auto& store = c_.services.preferences;
  fields_.lastDiscoveryDate = store.readAppLastDiscoveryDate();
  fields_.lastUpdateCheckDate = store.readAppLastUpdateCheckDate();
  auto apps = store.readDiscoveredApps().value_or(Apps{});
  const auto config = store.loadConfiguration();
  std::erase_if(
      apps, [&](const AppInfo& app) { return AppDiscoveryService::isIgnoredLabel(app.label, std::nullopt, config); });
  if (apps.empty()) return;
  replaceApps(std::move(apps));
  assignCounts();
  c_.log.info(fmt::format("Loaded {} previously discovered apps from preferences", fields_.apps.size()));
}

AppFacts Inventory::facts() const {
  const auto stored = c_.services.preferences.moment();
  AppFacts facts{.config = stored->config};
  facts.replacesAppStoreApps = MacAppStoreUpdatePolicy::replacesAppStoreApps(facts.config->installomatorOptions);
  facts.reinstallsCurrentRequiredApps = AppDiscoveryService::reinstallsCurrentRequiredApps(facts.config);
  facts.cycleStart = stored->cadence.currentPatchingStartDate;
  facts.cycleComplete = fields_.cycleCompletionMessage || completeUntil(facts.config, stored->cadence);
  facts.clearedLabels = c_.services.preferences.readUpdateAllErrorClearedLabels();
  facts.failures = c_.services.failures.records();
  facts.installs = c_.services.installs.history();
  facts.failureTargets = targetsOfFailures(fields_.apps, facts.failures);
  if (!latestReceipts_) latestReceipts_ = c_.services.latestReceipts.receipts();
  facts.latestReceipts = latestReceipts_;
  facts.hasAppStoreReceipt = [known = storeReceipts_, &files = c_.services.files](const AppInfo& app) {
    if (!app.appPath) return false;
    const auto [entry, isNew] = known->byPath.try_emplace(*app.appPath, false);
    if (isNew) entry->second = MacAppStoreUpdatePolicy::hasMacAppStoreReceipt(app.appPath, files);
    return entry->second;
  };
  return facts;
}

std::optional<std::string> Inventory::computeCycleCompletionMessage() const {
  const auto stored = c_.services.preferences.moment();
  const auto next = completeUntil(stored->config, stored->cadence);
  return next ? std::optional(completionMessage(*next)) : std::nullopt;
}

std::optional<Date> Inventory::completeUntil(const CorvaneConfiguration& config, const CadenceState& state) const {
  const PatchingCadenceManager cadence(config, c_.services.locale.calendar());
  const bool complete = cadence.isPatchingCompleteForCurrentCycle(state, c_.services.clock.now());
  return complete ? cadence.endOf(state) : std::nullopt;
}

std::string Inventory::completionMessage(Date next) const {
  return localized("Patching is complete for this cycle. The next cycle starts {}.", c_.services.locale.longDate(next));
}

void Inventory::replaceApps(Apps apps) {
  fields_.apps = std::move(apps);
  storeReceipts_ = std::make_shared<StoreReceipts>();
  c_.crossings.fieldsChanged();
}

void Inventory::assignCounts() {
  const auto counts = deriveCounts(fields_.apps, facts());
  fields_.pendingUpdates = counts.pendingUpdates;
  fields_.updatesAwaitingNextCycle = counts.updatesAwaitingNextCycle;
  fields_.upToDateCount = counts.upToDateCount;
  fields_.alertCount = counts.alertCount;
  c_.crossings.fieldsChanged();
}

void Inventory::recomputeCounts(SideEffects sideEffects) {
  assignCounts();
  updateDockBadge();
  if (sideEffects == SideEffects::run) c_.crossings.pendingUpdatesCounted();
}

void Inventory::storeApps() { c_.services.preferences.writeDiscoveredApps(fields_.apps); }

void Inventory::storeFingerprint() {
  c_.services.preferences.writeLastInventoryFingerprint(
      AppDiscoveryService::fingerprintInstalledApps(c_.services.places, c_.services.log));
}

void Inventory::recordDiscovery(Date when) {
  fields_.lastDiscoveryDate = when;
  c_.services.preferences.writePreference("LastDiscoveryDate", when);
  c_.crossings.fieldsChanged();
}

void Inventory::recordUpdateCheck(Date when) {
  fields_.lastUpdateCheckDate = when;
  c_.services.preferences.writePreference("LastUpdateCheckDate", when);
  c_.crossings.fieldsChanged();
}

void Inventory::updateDockBadge() {
  std::optional<std::string> badge;
  if (fields_.pendingUpdates >= 1) badge = fmt::format("{}", fields_.pendingUpdates);
  c_.services.application.setBadge(badge);
  c_.log.verbose(fmt::format("Dock badge set to {} (pendingUpdates={}, activationPolicy={})", badge.value_or("<nil>"),
                             fields_.pendingUpdates, policyName(c_.services.application.activationPolicy())));
}

void Inventory::refreshDeadlineDisplay() {
  auto& store = c_.services.preferences;
  const auto stored = store.moment();
  const auto calendar = c_.services.locale.calendar();
  const auto hardDate = DeferralManager::hardDeadlineDate(*stored);
  if (hardDate != c_.fields.deferral.currentHardDeadlineDate)
    c_.log.info(fmt::format("Hard deadline for display is now {}.", hardDate ? calendar.iso8601(*hardDate) : "<none>"));
  c_.crossings.deadlineRead(hardDate);
  showCompletion(completeUntil(stored->config, stored->cadence), calendar);
  if (fields_.cycleCompletionMessage && stored->nextAutoLaunch) store.clearNextAutoLaunch();
  c_.crossings.fieldsChanged();
}

// The words name a day, and change with it alone.
void Inventory::showCompletion(std::optional<Date> next, const Calendar& calendar) {
  if (!next) return fields_.cycleCompletionMessage.reset();
  const auto day = calendar.local(*next).day;
  if (fields_.cycleCompletionMessage && day == dayShown_) return;
  dayShown_ = day;
  fields_.cycleCompletionMessage = completionMessage(*next);
}

void Inventory::applyIgnoredLabelsToApps() {
  const auto config = c_.services.preferences.loadConfiguration();
  auto kept = AppDiscoveryService::droppingIgnoredApps(fields_.apps, config);
  if (kept.size() == fields_.apps.size()) return;
  replaceApps(std::move(kept));
  storeApps();
  recomputeCounts(SideEffects::suppressed);
}

void Inventory::invalidateReceiptCaches() {
  receipts_.clear();
  deferralEvents_.clear();
  latestReceipts_.reset();
  fields_.alertCount = deriveCounts(fields_.apps, facts()).alertCount;
  c_.crossings.fieldsChanged();
}

std::vector<PatchingReceipt> Inventory::receipts(const Label& label, std::size_t limit) {
  const auto [entry, isNew] = receipts_.try_emplace(label);
  if (isNew) entry->second = c_.services.receipts.readReceipts(label);
  return prefix(entry->second, limit);
}

std::vector<DeferralEventRecord> Inventory::deferralEvents(const Label& label, std::size_t limit) {
  const auto [entry, isNew] = deferralEvents_.try_emplace(label);
  if (isNew) entry->second = c_.services.deferralEvents.readEvents(label);
  return prefix(entry->second, limit);
}

}  // namespace corvane
