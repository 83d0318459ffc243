#include "core/records/helper_records.h"

#include <fmt/format.h>

#include "core/records/json_fields.h"

namespace corvane {
namespace {

JsonValue toJson(const BackgroundPatchSummary& summary) {
  return JsonObject{{"runID", summary.runID},
                    {"completedAt", secondsSince2001(summary.completedAt)},
                    {"labels", labelTexts(summary.labels)},
                    {"totalLabels", summary.totalLabels},
                    {"patchedCount", summary.patchedCount},
                    {"failureCount", summary.failureCount},
                    {"hasFailures", summary.hasFailures}};
}

Result<BackgroundPatchSummary> summaryFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "BackgroundPatchSummary");
  return fields.finish(BackgroundPatchSummary{.runID = fields.text("runID"),
                                              .completedAt = fields.dateSince2001("completedAt"),
                                              .labels = fields.labels("labels"),
                                              .totalLabels = fields.integer("totalLabels"),
                                              .patchedCount = fields.integer("patchedCount"),
                                              .failureCount = fields.integer("failureCount"),
                                              .hasFailures = fields.flag("hasFailures")});
}

JsonValue toJson(const HelperBackgroundCurrentRun& run) {
  JsonObject object{{"runID", run.runID},
                    {"startedAt", secondsSince2001(run.startedAt)},
                    {"totalLabels", run.totalLabels},
                    {"completedCount", run.completedCount}};
  setIfPresent(object, "currentLabel", run.currentLabel);
  setIfPresent(object, "currentLabelDisplayName", run.currentLabelDisplayName);
  return object;
}

Result<HelperBackgroundCurrentRun> currentRunFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "HelperBackgroundCurrentRun");
  return fields.finish(
      HelperBackgroundCurrentRun{.runID = fields.text("runID"),
                                 .startedAt = fields.dateSince2001("startedAt"),
                                 .totalLabels = fields.integer("totalLabels"),
                                 .completedCount = fields.integer("completedCount"),
                                 .currentLabel = fields.optionalText("currentLabel"),
                                 .currentLabelDisplayName = fields.optionalText("currentLabelDisplayName")});
}

JsonValue toJson(const ScheduledDiscoverySummary& summary) {
  return JsonObject{{"runID", summary.runID},
                    {"completedAt", secondsSince2001(summary.completedAt)},
                    {"appCount", summary.appCount},
                    {"pendingUpdateCount", summary.pendingUpdateCount}};
}

Result<ScheduledDiscoverySummary> discoveryFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "ScheduledDiscoverySummary");
  return fields.finish(ScheduledDiscoverySummary{.runID = fields.text("runID"),
                                                 .completedAt = fields.dateSince2001("completedAt"),
                                                 .appCount = fields.integer("appCount"),
                                                 .pendingUpdateCount = fields.integer("pendingUpdateCount")});
}

}  // namespace

PatchRunAnswer patchRunAnswer(std::int64_t installed, std::size_t labels, const Labels& skipped, const Labels& failed) {
  PatchRunAnswer answer{.success = failed.empty(),
                        .message = fmt::format("Updated {} of {}.", installed, labels),
                        .installedCount = installed};
  if (!skipped.empty()) answer.message += fmt::format(" Skipped: {}.", joined(skipped));
  if (!failed.empty()) answer.message += fmt::format(" Failed: {}.", joined(failed));
  return answer;
}

bool HelperPatchState::isBackgroundPassActive(Date now, Duration staleAfter) const {
  if (!currentRun) return false;
  const auto age = now - currentRun->startedAt;
  return -staleAfter < age && age < staleAfter;
}

JsonValue toJson(const HelperPatchState& state) {
  JsonObject object;
  if (state.lastBackgroundPatchSummary)
    object.set("lastBackgroundPatchSummary", toJson(*state.lastBackgroundPatchSummary));
  if (state.currentRun) object.set("currentRun", toJson(*state.currentRun));
  if (state.lastScheduledDiscoverySummary)
    object.set("lastScheduledDiscoverySummary", toJson(*state.lastScheduledDiscoverySummary));
  return object;
}

Result<HelperPatchState> helperPatchStateFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "HelperPatchState");
  return fields.finish(HelperPatchState{
      .lastBackgroundPatchSummary = fields.optionalRecord("lastBackgroundPatchSummary", summaryFromJson),
      .currentRun = fields.optionalRecord("currentRun", currentRunFromJson),
      .lastScheduledDiscoverySummary = fields.optionalRecord("lastScheduledDiscoverySummary", discoveryFromJson)});
}

}  // namespace corvane
