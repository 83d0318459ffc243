// Cards, time stamps, the next step, filter and the empty list.
#include <string_view>

#include "base/localizable.h"
#include "presentation/dashboard_parts.h"
#include "workflow/deferral_texts.h"
#include "workflow/watchpoint.h"

namespace corvane {

namespace {

// A deadline this near is shown as a warning.
constexpr Duration kNearDeadline = 24h;

struct FilterTexts {
  FilterMode mode;
  std::string_view text;
  std::string_view help;
  std::string_view nothing;  // of a filter that nothing passes
};

constexpr FilterTexts kFilters[] = {
    {FilterMode::all, toLocalize("All"), toLocalize("Show all applications"), ""},
    {FilterMode::needsUpdate, toLocalize("Needs Update"), toLocalize("Show applications that need an update"),
     toLocalize("No applications need an update")},
    {FilterMode::alerts, toLocalize("Alerts"), toLocalize("Show applications with alerts"),
     toLocalize("No applications have alerts")},
    {FilterMode::upToDate, toLocalize("Up to Date"), toLocalize("Show applications that are up to date"),
     toLocalize("No applications are up to date")}};

bool countsAreBeingRenewed(const StatusFields& fields) {
  return fields.gate.isLoading && fields.gate.currentOperation == DiscoveryOperation::checkUpdates &&
         fields.discovery.updateCheckCoversAllApps;
}

StatusCard pendingCard(const InventoryFields& inventory, const PageTexts& texts) {
  if (inventory.cycleCompletionMessage && inventory.updatesAwaitingNextCycle >= 1) {
    return {.key = "pending",
            .title = texts.localized("New Updates"),
            .value = fmt::to_string(inventory.updatesAwaitingNextCycle),
            .icon = "arrow.down.circle",
            .color = ColorRole::blue};
  }
  return {.key = "pending",
          .title = texts.localized("Pending Updates"),
          .value = fmt::to_string(inventory.pendingUpdates),
          .icon = "arrow.down.circle.fill",
          .color = inventory.pendingUpdates > 0 ? ColorRole::orange : ColorRole::secondary};
}

ColorRole deadlineColor(Date deadline, Date now) {
  if (deadline <= now) return ColorRole::red;
  return deadline - now < kNearDeadline ? ColorRole::orange : ColorRole::primary;
}

struct WatchpointLook {
  PageMessage operator()(const watchpoint::Enforcement&) const {
    return {.symbol = "timer", .color = ColorRole::orange};
  }
  PageMessage operator()(const watchpoint::DeferralReminder&) const { return {.symbol = "bell"}; }
  PageMessage operator()(const watchpoint::FocusDeferral&) const { return {.symbol = "moon.zzz"}; }
};

}  // namespace

std::vector<StatusCard> makeStatusCards(const StatusFields& fields, const PageTexts& texts) {
  const auto& inventory = fields.inventory;
  std::vector<StatusCard> cards{pendingCard(inventory, texts),
                                {.key = "upToDate",
                                 .title = texts.localized("Up to Date"),
                                 .value = fmt::to_string(inventory.upToDateCount),
                                 .icon = "checkmark.circle.fill",
                                 .color = ColorRole::green},
                                {.key = "alerts",
                                 .title = texts.localized("Alerts"),
                                 .value = fmt::to_string(inventory.alertCount),
                                 .icon = "exclamationmark.triangle.fill",
                                 .color = inventory.alertCount > 0 ? ColorRole::red : ColorRole::secondary}};
  if (countsAreBeingRenewed(fields)) {
    for (auto& card : cards) {
      card.value = "—";
      card.isPlaceholder = true;
    }
  }
  return cards;
}

std::vector<TimestampPill> makeTimestampPills(const DashboardInputs& inputs, const PageTexts& texts) {
  const auto& inventory = inputs.fields.inventory;
  const auto moment = [&](std::optional<Date> date) {
    return date ? momentText(*date, inputs.now, inputs.locale) : texts.localized("Never");
  };
  const auto valueColor = [](std::optional<Date> date) { return date ? ColorRole::primary : ColorRole::secondary; };
  std::vector<TimestampPill> pills{{.key = "discovery",
                                    .icon = "magnifyingglass",
                                    .label = texts.localized("Last Discovery"),
                                    .timestamp = moment(inventory.lastDiscoveryDate),
                                    .valueColor = valueColor(inventory.lastDiscoveryDate)},
                                   {.key = "check",
                                    .icon = "arrow.triangle.2.circlepath",
                                    .label = texts.localized("Last Check for Updates"),
                                    .timestamp = moment(inventory.lastUpdateCheckDate),
                                    .valueColor = valueColor(inventory.lastUpdateCheckDate)}};
  if (const auto deadline = inputs.fields.deferral.currentHardDeadlineDate) {
    const auto color = deadlineColor(*deadline, inputs.now);
    pills.push_back({.key = "deadline",
                     .icon = "calendar",
                     .label = texts.localized("Update Deadline"),
                     .timestamp = moment(deadline),
                     .iconColor = color == ColorRole::primary ? ColorRole::secondary : color,
                     .valueColor = color});
  }
  const auto* enforcement = inputs.watchpoint ? std::get_if<watchpoint::Enforcement>(&*inputs.watchpoint) : nullptr;
  if (enforcement != nullptr) {
    pills.push_back({.key = "enforcement",
                     .icon = "timer",
                     .label = texts.localized("Installs Automatically"),
                     .timestamp = moment(enforcement->at),
                     .iconColor = ColorRole::orange,
                     .valueColor = ColorRole::orange});
  }
  return pills;
}

// A complete cycle has nothing armed, so one line is enough for both.
PageMessage makeNextStep(const DashboardInputs& inputs) {
  if (const auto& armed = inputs.watchpoint) {
    auto step = std::visit(WatchpointLook(), *armed);
    step.text = watchpointText(*armed, remainingText(momentOf(*armed), inputs.now, inputs.locale),
                               inputs.facts.config->focusDeferralNotificationsEnabled);
    return step;
  }
  const auto& complete = inputs.fields.inventory.cycleCompletionMessage;
  if (!complete) return {};
  return {.text = *complete, .symbol = "checkmark.circle.fill", .color = ColorRole::green};
}

std::vector<FilterSegment> makeFilterSegments(FilterMode selected, const PageTexts& texts) {
  std::vector<FilterSegment> segments;
  for (const auto& filter : kFilters) {
    segments.push_back({.key = std::string(rawName(filter.mode)),
                        .text = texts.localized(filter.text),
                        .help = texts.localized(filter.help),
                        .selected = filter.mode == selected});
  }
  return segments;
}

EmptyState makeEmptyState(const DashboardInputs& inputs, const PageTexts& texts) {
  if (!inputs.listed.empty()) return {};
  const auto& inventory = inputs.fields.inventory;
  EmptyState empty{.visible = true, .symbol = "magnifyingglass"};
  if (!inventory.apps.empty()) {
    for (const auto& filter : kFilters)
      if (filter.mode == inputs.fields.filterMode) empty.title = texts.localized(filter.nothing);
    empty.showAll = {.text = texts.localized("Show All"),
                     .help = texts.localized("Show every application"),
                     .visible = true,
                     .enabled = true};
    return empty;
  }
  empty.check = {.text = texts.localized("Check for Updates"),
                 .help = texts.localized("Scan for installed applications and look up their latest versions"),
                 .visible = true,
                 .enabled = !isBusy(inputs.fields)};
  if (inventory.lastDiscoveryDate || inventory.lastUpdateCheckDate) {
    empty.title = texts.localized("No applicable applications discovered");
    empty.text = texts.localized("Corvane keeps checking in the background. Click Check for Updates to scan now.");
  } else {
    empty.title = texts.localized("No applications discovered yet");
    empty.text = texts.localized("Click Check for Updates to scan installed apps and check for available updates.");
  }
  return empty;
}

}  // namespace corvane
