// The history of deferrals: one file of JSON lines a user, in a folder that all users may add files to.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "core/history/json_lines.h"
#include "core/logging/logging_service.h"
#include "core/records/history_records.h"
#include "platform/files.h"

namespace corvane {

// Any thread. Only the own user's file is read and written: what another user of this Mac put off is no
// business of this one, and a file under another's control is no source for what is shown here. Since anybody may
// add to the folder, a link or another user's file under the own name is neither read nor written.
class DeferralEventManager {
 public:
  // `user` is the short name of the user; a name that is no plain file name gets its odd characters replaced.
  DeferralEventManager(const std::filesystem::path& folder, std::string_view user, Files& files, LogSink& log);

  [[nodiscard]] Status writeEvent(const DeferralEventRecord& event);
  // Newest first; damaged lines are left out and told to the log once.
  [[nodiscard]] std::vector<DeferralEventRecord> readEvents(const Label& label) const;

  [[nodiscard]] const std::filesystem::path& file() const { return file_.path(); }

 private:
  JsonLinesFile file_;
};

}  // namespace corvane
