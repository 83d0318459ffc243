// What a patch run decides about a label, before the tool runs and after it. Pure; nothing is run or written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/date.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "core/records/helper_records.h"
#include "core/records/history_records.h"

namespace corvane {

enum class PatchStep {
  install,
  leaveCurrent,   // the installed version satisfies the target; the tool would install downwards too
  refuseUnknown,  // no such label in the catalogue: the tool is not asked
  refuseIgnored,  // the settings leave the label out
  refuseMismatch  // what is installed is signed by another team than the label expects
};

// `app` is what discovery found for the label, absent when neither the catalogue nor the settings let it.
[[nodiscard]] PatchStep decideBeforeRun(const Label& label, const std::optional<AppInfo>& app,
                                        const CorvaneConfiguration& config);

// How long the tool may take for a label. A prompt of the tool waits as long as it is configured to, up to a week, and
// the download before it and the install behind it take their own time; what takes longer has hung.
[[nodiscard]] Duration toolTimeLimit(const CorvaneConfiguration& config);

// What the tool's lines told, as they came.
struct ToolWords {
  std::optional<std::string> latestVersion;
  bool saysCurrent = false;  // it named what is installed the newest
  bool atDialog = false;     // its last words were about an open application that it asks to quit
  void take(std::string_view line);
  friend bool operator==(const ToolWords&, const ToolWords&) = default;
};

// How the tool ended. `code` is its exit code.
struct ToolEnd {
  std::int64_t code = 0;
  bool timedOut = false;
  ToolWords words = {};
};

struct PatchOutcome {
  Label label;
  std::string name = {};  // shown to people; empty where nothing is known of the application
  PatchingStatus status = PatchingStatus::success;
  std::int64_t code = 0;
  std::optional<std::string> version;  // installed afterwards
  std::optional<std::string> targetVersion;
  bool installed = false;            // this run replaced or installed it, and that was verified
  bool usedStagedInstaller = false;  // the tool took the one that lay ready
  bool receipt = true;               // whether a receipt is written
  std::string text;                  // for the log
  friend bool operator==(const PatchOutcome&, const PatchOutcome&) = default;
};

// For labels that the tool was not run for; they leave no receipt, for nothing was installed.
[[nodiscard]] PatchOutcome outcomeWithoutRun(PatchStep step, const Label& label, const std::optional<AppInfo>& app);
// One that an unattended run leaves out at the last moment: skipped, without a receipt.
[[nodiscard]] PatchOutcome outcomeLeftOut(const Label& label, const std::optional<AppInfo>& app, std::string why);

// After the tool: an exit code of 0 proves nothing, so `after`, read again, decides; absent when that failed, and then
// nothing is held against the label. `config` is the one that the label was begun with. With no known target the
// version that the tool itself told is the target. Without that too the application must be there in another version
// than before, or the tool must have said that there is no newer one. A tool whose question nobody answered is skipped.
[[nodiscard]] PatchOutcome outcomeOfRun(const AppInfo& before, const std::optional<AppInfo>& after, const ToolEnd& end,
                                        const CorvaneConfiguration& config);

// As the outcomes sum up.
[[nodiscard]] PatchRunAnswer answerOf(const std::vector<PatchOutcome>& outcomes);

// How a run ended: what became of each label up to its end, and why that came before the last one.
struct RunReport {
  std::vector<PatchOutcome> outcomes;
  std::optional<Error> error = {};
};
[[nodiscard]] Result<PatchRunAnswer> answerOf(const RunReport& report);

[[nodiscard]] PatchingReceipt receiptOf(const PatchOutcome& outcome, Date finishedAt);

}  // namespace corvane
