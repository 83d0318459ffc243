// What a patch run decides about a label, before the tool runs and after it. Pure; nothing is run or written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "core/records/helper_records.h"
#include "core/records/history_records.h"

namespace corvane {

enum class PatchStep {
  install,
  leaveCurrent,  // the installed version satisfies the target; the tool would install downwards too
  refuseUnknown  // no such label in the catalogue: the tool is not asked
};

// `app` is what discovery found for the label, absent when the catalogue does not have it.
[[nodiscard]] PatchStep decideBeforeRun(const std::optional<AppInfo>& app, const CorvaneConfiguration& config);

// How the tool ended. `code` is its exit code.
struct ToolEnd {
  std::int64_t code = 0;
  bool timedOut = false;
};

struct PatchOutcome {
  Label label;
  PatchingStatus status = PatchingStatus::success;
  std::int64_t code = 0;
  std::optional<std::string> version;  // installed afterwards
  std::optional<std::string> targetVersion;
  bool installed = false;  // this run replaced or installed it, and that was verified
  bool receipt = true;     // whether a receipt is written
  std::string text;        // for the log
  friend bool operator==(const PatchOutcome&, const PatchOutcome&) = default;
};

// For labels that the tool was not run for.
[[nodiscard]] PatchOutcome outcomeWithoutRun(PatchStep step, const Label& label, const std::optional<AppInfo>& app);

// After the tool: an exit code of 0 proves nothing, so `after`, read again, decides. With no known target the
// application must at least be there; then the version counts as new when it differs from the one before.
[[nodiscard]] PatchOutcome outcomeOfRun(const AppInfo& before, const std::optional<AppInfo>& after, ToolEnd end,
                                        const CorvaneConfiguration& config);

// "Updated <n> of <m>." and, with failures, " Failed: <label>, <label>."; a success only when every label ended
// installed or current.
[[nodiscard]] PatchRunAnswer answerOf(const std::vector<PatchOutcome>& outcomes);

[[nodiscard]] PatchingReceipt receiptOf(const PatchOutcome& outcome, Date finishedAt);

}  // namespace corvane
