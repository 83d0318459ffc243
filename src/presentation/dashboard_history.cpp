// The expanded part of a row: earlier patch runs and deferrals of its label.
#include <string_view>

#include "core/policies/installomator_exit_code.h"
#include "presentation/dashboard_parts.h"

namespace corvane {

namespace {

struct Look {
  std::string_view symbol;
  ColorRole color;
};

Look lookOf(PatchingStatus status) {
  switch (status) {
    case PatchingStatus::success:
      return {"checkmark.circle.fill", ColorRole::green};
    case PatchingStatus::failure:
      return {"xmark.octagon.fill", ColorRole::red};
    case PatchingStatus::skipped:
      break;
  }
  return {"forward.circle", ColorRole::orange};
}

std::string_view symbolOf(DeferralEventType type) {
  switch (type) {
    case DeferralEventType::userDeferred:
      return "clock.arrow.circlepath";
    case DeferralEventType::focusSuppressed:
      return "moon.zzz";
    case DeferralEventType::deadlineForced:
      return "exclamationmark.octagon";
    case DeferralEventType::installationStarted:
      break;
  }
  return "arrow.down.circle";
}

// A failed run that left another version than it aimed at tells what it tried.
std::string versionText(const PatchingReceipt& receipt, const PageTexts& texts) {
  auto version = receipt.version.value_or("");
  const auto target = receipt.targetVersion.value_or("");
  if (receipt.status == PatchingStatus::failure && !target.empty() && target != version)
    return texts.localized("Tried {}", target);
  return version;
}

std::string detailText(const PatchingReceipt& receipt, const PageTexts& texts) {
  if (receipt.status != PatchingStatus::failure) return {};
  const auto code = receipt.installomatorExitCode;
  const auto detail = InstallomatorExitCode::detail(code, receipt.usedStagedInstaller.value_or(false));
  return texts.localized("{} (Installomator exit {})", detail.description, code);
}

}  // namespace

void fillHistory(AppStatusRow& row, const ExpandedHistory& history, const DashboardInputs& inputs,
                 const PageTexts& texts) {
  row.receiptsTitle = texts.localized("Recent patches");
  if (history.receipts.empty()) row.receiptsEmptyText = texts.localized("No patches recorded for this label yet.");
  for (const auto& receipt : history.receipts) {
    const auto look = lookOf(receipt.status);
    row.receipts.push_back({.key = iso8601Utc(receipt.timestamp) + "#" + fmt::to_string(row.receipts.size()),
                            .symbol = std::string(look.symbol),
                            .color = look.color,
                            .time = momentText(receipt.timestamp, inputs.now, inputs.locale),
                            .version = versionText(receipt, texts),
                            .detail = detailText(receipt, texts)});
  }
  if (!history.events.empty()) row.eventsTitle = texts.localized("Deferral events");
  for (const auto& event : history.events) {
    row.events.push_back({.key = event.id.text(),
                          .symbol = std::string(symbolOf(event.eventType)),
                          .text = texts.localized(displayText(event.eventType)),
                          .time = momentText(event.timestamp, inputs.now, inputs.locale)});
  }
}

}  // namespace corvane
