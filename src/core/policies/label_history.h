// What the receipts of earlier patch runs say of a label: whether it is held after repeated failures, and
// whether a required one was installed in this cycle. Pure; the caches that read the receipts live elsewhere.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "base/date.h"
#include "core/records/app_info.h"
#include "core/records/history_records.h"

namespace corvane {

struct CorvaneConfiguration;

// Failed installs of a label. All functions may be called from any thread.
struct LabelFailureHistory {
  // Counted failures in a row after which a label is left alone: twice may be a bad network or a bad day.
  static constexpr std::int64_t kFailuresBeforeHold = 3;

  // The failures in a row that end with the label's newest counted receipt, all for one target version.
  struct Record {
    std::int64_t count = 0;
    std::optional<std::string> targetVersion;
    Date lastFailureAt{};
    // The newest failure that suffices for a hold: the third from the end of the row, or a later one whose code is
    // final for the version. Absent while there is none.
    std::optional<Date> holdingFailureAt;

    friend bool operator==(const Record&, const Record&) = default;
  };
  using Records = std::unordered_map<Label, Record>;

  // One record for each label whose newest receipts are failures. `receipts` stand newest first. A success
  // ends a row, and so does a failure for another target version. Skipped runs and failures that do not
  // count (see InstallomatorExitCode) neither lengthen a row nor end it.
  [[nodiscard]] static Records failureRecords(std::span<const PatchingReceipt> receipts);

  // True when three counted failures in a row for this target version, or a single one whose code is final for the
  // version (see InstallomatorExitCode), lie at or behind `cycleStart`. No cycle start means that every failure counts.
  // An unknown `targetVersion` keeps a hold, since no newer version is known; a known one lifts the hold of failures
  // whose target was not known.
  [[nodiscard]] static bool isHeld(const Label& label, const std::optional<std::string>& targetVersion,
                                   std::optional<Date> cycleStart, const Records& records);
};

// Successful installs of a label.
struct LabelInstallHistory {
  using History = std::unordered_map<Label, Date>;

  // The latest success of each label. `receipts` in any order.
  [[nodiscard]] static History installHistory(std::span<const PatchingReceipt> receipts);

  // For a required application, which the caller has made sure of: true when it is installed, the options
  // make required labels reinstall (INSTALL=force), and no install of it is recorded in the cycle. Never true
  // without a cycle start: nothing is forced before the cadence is seeded.
  [[nodiscard]] static bool isForcedReinstallPending(const AppInfo& app, const CorvaneConfiguration& config,
                                                     const History& history, std::optional<Date> cycleStart);
};

}  // namespace corvane
