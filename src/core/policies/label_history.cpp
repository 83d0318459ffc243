#include "core/policies/label_history.h"

#include <algorithm>
#include <set>

#include "core/policies/installomator_exit_code.h"
#include "core/preferences/configuration.h"
#include "core/preferences/options_codec.h"

namespace corvane {

namespace {

bool isCountedFailure(const PatchingReceipt& receipt) {
  return receipt.status == PatchingStatus::failure &&
         InstallomatorExitCode::countsAsInstallFailure(receipt.installomatorExitCode);
}

void lengthen(LabelFailureHistory::Record& record, const PatchingReceipt& receipt) {
  if (++record.count == 1) {
    record.targetVersion = receipt.targetVersion;
    record.lastFailureAt = receipt.timestamp;
  }
  const bool suffices = record.count == LabelFailureHistory::kFailuresBeforeHold ||
                        InstallomatorExitCode::isFinalForVersion(receipt.installomatorExitCode);
  if (suffices && !record.holdingFailureAt) record.holdingFailureAt = receipt.timestamp;
}

}  // namespace

LabelFailureHistory::Records LabelFailureHistory::failureRecords(std::span<const PatchingReceipt> receipts) {
  Records records;
  LabelSet ended;
  for (const auto& receipt : receipts) {
    if (ended.contains(receipt.label)) continue;
    if (receipt.status == PatchingStatus::success) {
      ended.insert(receipt.label);
    } else if (isCountedFailure(receipt)) {
      const auto found = records.find(receipt.label);
      if (found != records.end() && found->second.targetVersion != receipt.targetVersion)
        ended.insert(receipt.label);
      else
        lengthen(records[receipt.label], receipt);
    }
  }
  return records;
}

bool LabelFailureHistory::isHeld(const Label& label, const std::optional<std::string>& targetVersion,
                                 std::optional<Date> cycleStart, const Records& records) {
  const auto found = records.find(label);
  if (found == records.end() || !found->second.holdingFailureAt) return false;
  if (targetVersion && targetVersion != found->second.targetVersion) return false;
  return !cycleStart || *found->second.holdingFailureAt >= *cycleStart;
}

LabelInstallHistory::History LabelInstallHistory::installHistory(std::span<const PatchingReceipt> receipts) {
  History history;
  for (const auto& receipt : receipts) {
    if (receipt.status != PatchingStatus::success) continue;
    const auto [entry, fresh] = history.try_emplace(receipt.label, receipt.timestamp);
    if (!fresh) entry->second = std::max(entry->second, receipt.timestamp);
  }
  return history;
}

bool LabelInstallHistory::isForcedReinstallPending(const AppInfo& app, const CorvaneConfiguration& config,
                                                   const History& history, std::optional<Date> cycleStart) {
  if (!cycleStart || !app.isInstalled() || !parseInstallomatorOptions(config.installomatorOptions).forceInstall)
    return false;
  const auto found = history.find(app.label);
  return found == history.end() || found->second < *cycleStart;
}

}  // namespace corvane
