// What the helper tells the application of its own work: helper-state.json and helper-discovered-apps.json. Keeps what
// it last wrote; decides nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "base/json.h"
#include "core/logging/logging_service.h"
#include "core/records/helper_records.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace corvane {

// Written into the file; one of a later version is set aside whole. A file without a version is of the first.
inline constexpr std::int64_t kHelperStateVersion = 1;

// Main thread; the only writer of both files. Each change replaces the file atomically, with all else in it as it was,
// fields that this helper does not know included. What is damaged or of a later version is set aside beside the file
// and told to the log before anything is written; while that fails nothing is. A failed write is told once until one
// succeeds, which then brings all that happened meanwhile.
class HelperStateFile {
 public:
  HelperStateFile(std::filesystem::path state, std::filesystem::path apps, Files& files, const Clock& clock,
                  LogSink& log);

  // At start, once this helper is the only one, and before all else: reads what is there. A pass that a killed helper
  // left is told to the log and taken out. One may try again at once, and whatever ends a helper may do so again: from
  // the second in a row on the next pass waits for its interval.
  void settle();

  // The background pass: it began or went on; it ended with its summary, in the write that takes out the current run;
  // or it was cut off and leaves no summary.
  void passGoesOn(HelperBackgroundCurrentRun run);
  void passEnded(BackgroundPatchSummary summary);
  void passCutOff();
  // A pass came to its end at `when`, whether it had anything to do or not.
  void passConcluded(Date when);

  // A scheduled discovery has ended. The list is written first, since readers follow the summary to it; without the
  // list the summary is not written either.
  [[nodiscard]] Status discoveryEnded(const ScheduledDiscoverySummary& summary, const Apps& apps);

  [[nodiscard]] const HelperPatchState& state() const { return state_; }
  [[nodiscard]] std::optional<Date> lastPassConcludedAt() const { return lastPass_; }

 private:
  void read();
  [[nodiscard]] Status setAside(std::string_view reason);
  [[nodiscard]] Status write();
  Status store();  // a failure is told once, until it works again

  std::filesystem::path file_;
  std::filesystem::path apps_;
  Files& files_;
  const Clock& clock_;
  Logger log_;
  HelperPatchState state_;
  std::int64_t cutOff_ = 0;  // passes in a row that were left by helpers that ended in them
  std::optional<Date> lastPass_;
  JsonObject others_;               // fields of the file that are none of ours
  std::optional<std::string> bad_;  // why the file that is there must be set aside
  bool failing_ = false;
};

}  // namespace corvane
