#include "workflow/status_texts.h"

#include <algorithm>

#include "base/localized.h"
#include "workflow/app_predicates.h"

namespace corvane {

namespace {

bool isReady(const StatusFields& fields) {
  return fields.helper.helperOperational && fields.helper.installomatorAvailable;
}

// The helper is late after login while the tool is known to be there, so the helper itself is not asked.
bool isInGrace(const StatusFields& fields, Date now) {
  const auto& deadline = fields.helper.postLoginHelperGraceDeadline;
  return deadline && *deadline > now && fields.helper.installomatorAvailable;
}

std::string patchingLine(const StatusFields& fields) {
  const auto& prompt = fields.blockingPrompt.blockingPromptAppName;
  if (prompt && !prompt->empty()) return waitingForQuitText(*prompt);
  return localized(fields.gate.currentOperation == DiscoveryOperation::patchBackground
                       ? toLocalize("Background patching…")
                       : toLocalize("Patching…"));
}

std::string readyLine(const InventoryFields& inventory) {
  if (inventory.pendingUpdates == 1) return localized("1 update available");
  if (inventory.pendingUpdates >= 2) return localized("{} updates available", inventory.pendingUpdates);
  if (inventory.cycleCompletionMessage && inventory.updatesAwaitingNextCycle >= 1)
    return localized("Patching is complete for this cycle");
  return localized(uncheckedAppCount(inventory.apps) > 0 ? toLocalize("Update check needed")
                                                         : toLocalize("All apps up to date"));
}

}  // namespace

std::string statusLine(const StatusFields& fields, Date now) {
  if (fields.gate.isPatching) return patchingLine(fields);
  if (isReady(fields)) return readyLine(fields.inventory);
  return localized(isInGrace(fields, now) ? toLocalize("Starting helper…") : toLocalize("Setup required"));
}

std::string_view statusSymbolName(const StatusFields& fields, Date now) {
  if (fields.gate.isPatching) return "arrow.triangle.2.circlepath";
  if (isReady(fields)) return fields.inventory.pendingUpdates >= 1 ? "arrow.down.circle.fill" : "checkmark.shield";
  return isInGrace(fields, now) ? "hourglass" : "exclamationmark.shield";
}

std::string startText(DiscoveryOperation operation, std::size_t count) {
  switch (operation) {
    case DiscoveryOperation::initialLoad:
      return localized("Loading status and discovering applications...");
    case DiscoveryOperation::discoverInstalled:
      return localized("Discovering installed applications...");
    case DiscoveryOperation::checkUpdates:
      return count > 0 ? localized("Checking for updates for {} applications (this may take a few minutes)...", count)
                       : localized("Checking for updates (this may take a few minutes)...");
    case DiscoveryOperation::patchAll:
      return localized("Updating applications...");
    case DiscoveryOperation::patchSingle:
      return localized("Updating application...");
    case DiscoveryOperation::patchBackground:
      return localized("Background updating applications…");
  }
  return {};
}

std::string checkCompleteText(const InventoryFields& inventory) {
  const auto waiting = inventory.updatesAwaitingNextCycle;
  if (inventory.cycleCompletionMessage && waiting == 1)
    return localized("Check for Updates complete: 1 new update will wait for the next cycle, {} up to date.",
                     inventory.upToDateCount);
  if (inventory.cycleCompletionMessage && waiting > 1)
    return localized("Check for Updates complete: {} new updates will wait for the next cycle, {} up to date.", waiting,
                     inventory.upToDateCount);
  return localized("Check for Updates complete: {} updates available, {} up to date.", inventory.pendingUpdates,
                   inventory.upToDateCount);
}

std::string backgroundPatchStatusText(const std::optional<std::string>& displayName,
                                      const std::optional<std::string>& label, std::int64_t completed,
                                      std::int64_t total) {
  const auto name = displayName && !displayName->empty() ? *displayName : label.value_or("");
  if (name.empty()) {
    if (total == 1) return localized("Background patching 1 app…");
    return total > 1 ? localized("Background patching {} apps…", total) : localized("Background patching in progress…");
  }
  if (total < 1) return localized("Background patching {}…", name);
  return patchProgressText(DiscoveryOperation::patchBackground, name,
                           std::clamp<std::int64_t>(completed, 0, total - 1) + 1, total);
}

std::string patchProgressText(DiscoveryOperation operation, const std::string& name, std::int64_t index,
                              std::int64_t total) {
  return localized(operation == DiscoveryOperation::patchBackground ? toLocalize("Background patching {} ({} of {})…")
                                                                    : toLocalize("Updating {} ({} of {})…"),
                   name, index, total);
}

std::string waitingForQuitText(const std::string& name) { return localized("Waiting for you to quit {}…", name); }

}  // namespace corvane
