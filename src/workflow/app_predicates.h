// The vocabulary of every count, filter and label list: the only tests of whether an application needs an
// update, anywhere. Pure functions of an application and facts taken once.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/locale.h"
#include "workflow/app_facts.h"
#include "workflow/status_fields.h"

namespace corvane {

// A copy of the App Store that the configured options leave alone.
[[nodiscard]] bool isExcludedAppStoreApp(const AppInfo& app, const AppFacts& facts);

// A required application that is current, and is installed again once a cycle because the options say so.
[[nodiscard]] bool isForcedReinstallPending(const AppInfo& app, const AppFacts& facts);

[[nodiscard]] bool appNeedsUpdate(const AppInfo& app, const AppFacts& facts);

// It needs an update and its check did not fail.
[[nodiscard]] bool isPending(const AppInfo& app, const AppFacts& facts);

// The failures because of which the label is left alone until the next cycle or version.
[[nodiscard]] std::optional<LabelFailureHistory::Record> heldFailureRecord(const Label& label, const AppFacts& facts);

// Held by its failures, or, in a complete cycle, set aside by a failed Update All.
[[nodiscard]] bool isHeldBack(const Label& label, const AppFacts& facts);

// The newest receipt of a pending application when it tells of a failed install.
[[nodiscard]] std::optional<PatchingReceipt> latestFailedReceipt(const AppInfo& app, const AppFacts& facts);

[[nodiscard]] bool isAlert(const AppInfo& app, const AppFacts& facts);

// A mismatched team identifier lands here once a version is known.
[[nodiscard]] bool isUpToDate(const AppInfo& app, const AppFacts& facts);

// Pending labels in the order of `apps`, without those that the settings ignore.
[[nodiscard]] Labels actionableUpdateLabels(const Apps& apps, const AppFacts& facts);

// Of these the ones a prompt may ask about: none once the published message says that the cycle is complete, and
// none that is held back.
[[nodiscard]] Labels promptableUpdateLabels(const InventoryFields& inventory, const AppFacts& facts);

[[nodiscard]] std::int64_t uncheckedAppCount(const Apps& apps);
[[nodiscard]] std::int64_t updateCheckFailedCount(const Apps& apps, const AppFacts& facts);

// Sorted by display name in the locale's order, without regard to case.
[[nodiscard]] Apps filteredApps(const Apps& apps, FilterMode mode, const AppFacts& facts, const Locale& locale);

struct AppCounts {
  std::int64_t pendingUpdates = 0;
  std::int64_t updatesAwaitingNextCycle = 0;
  std::int64_t upToDateCount = 0;
  std::int64_t alertCount = 0;
  friend bool operator==(const AppCounts&, const AppCounts&) = default;
};

// One pass, linear in the applications.
[[nodiscard]] AppCounts deriveCounts(const Apps& apps, const AppFacts& facts);

}  // namespace corvane
