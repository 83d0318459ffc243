// What the helper tells of itself: progress of a run, and the state file that it writes as it works.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/date.h"
#include "core/records/app_info.h"

namespace corvane {

struct PatchProgressInfo {
  bool isActive = false;
  std::string currentLabel;
  std::int64_t completedCount = 0;
  std::int64_t totalLabels = 0;
  friend bool operator==(const PatchProgressInfo&, const PatchProgressInfo&) = default;
};

// The answer of getStatus; the application reads none of its fields, only that it came.
struct StatusInfo {
  std::string helperVersion;
  std::int64_t processIdentifier = 0;
  Date startedAt;
  bool installomatorAvailable = false;
  friend bool operator==(const StatusInfo&, const StatusInfo&) = default;
};

// What a patch run answered.
struct PatchRunAnswer {
  bool success = false;  // no label failed
  std::string message;   // the helper's summary, naming labels
  std::int64_t installedCount = 0;
  friend bool operator==(const PatchRunAnswer&, const PatchRunAnswer&) = default;
};

// The answer of a run over `labels` labels, of which so many were installed; the others were current, skipped or
// failed: "Updated 1 of 4. Skipped: quill. Failed: stamp, pen."
[[nodiscard]] PatchRunAnswer patchRunAnswer(std::int64_t installed, std::size_t labels, const Labels& skipped,
                                            const Labels& failed);

struct BackgroundPatchSummary {
  std::string runID;
  Date completedAt;
  Labels labels;
  std::int64_t totalLabels = 0;
  std::int64_t patchedCount = 0;
  std::int64_t failureCount = 0;
  bool hasFailures = false;
  friend bool operator==(const BackgroundPatchSummary&, const BackgroundPatchSummary&) = default;
};

struct HelperBackgroundCurrentRun {
  std::string runID;
  Date startedAt;
  std::int64_t totalLabels = 0;
  std::int64_t completedCount = 0;
  std::optional<std::string> currentLabel;
  std::optional<std::string> currentLabelDisplayName;
  friend bool operator==(const HelperBackgroundCurrentRun&, const HelperBackgroundCurrentRun&) = default;
};

struct ScheduledDiscoverySummary {
  std::string runID;
  Date completedAt;
  std::int64_t appCount = 0;
  std::int64_t pendingUpdateCount = 0;
  friend bool operator==(const ScheduledDiscoverySummary&, const ScheduledDiscoverySummary&) = default;
};

// The content of helper-state.json; dates are seconds since 2001.
struct HelperPatchState {
  std::optional<BackgroundPatchSummary> lastBackgroundPatchSummary;
  std::optional<HelperBackgroundCurrentRun> currentRun;
  std::optional<ScheduledDiscoverySummary> lastScheduledDiscoverySummary;

  // A current run exists and began less than `staleAfter` before now. One that begins as far ahead of now is of a
  // clock that was set back since, and counts as over.
  [[nodiscard]] bool isBackgroundPassActive(Date now, Duration staleAfter) const;
  friend bool operator==(const HelperPatchState&, const HelperPatchState&) = default;
};

[[nodiscard]] JsonValue toJson(const HelperPatchState& state);
[[nodiscard]] Result<HelperPatchState> helperPatchStateFromJson(const JsonValue& value);

// Of a pending self-update, told by the self-update scheduler.
struct SelfUpdateAvailability {
  Label label;
  std::string availableVersion;
  std::optional<std::string> runningVersion;
  friend bool operator==(const SelfUpdateAvailability&, const SelfUpdateAvailability&) = default;
};

}  // namespace corvane
