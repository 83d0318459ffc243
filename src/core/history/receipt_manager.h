// The receipts of patch runs: one JSON object a line, appended by the helper, read by everybody.
#pragma once

#include <filesystem>
#include <vector>

#include "base/error.h"
#include "core/history/json_lines.h"
#include "core/logging/logging_service.h"
#include "core/records/history_records.h"
#include "platform/files.h"

namespace corvane {

using Receipts = std::vector<PatchingReceipt>;

// Any thread. A missing file holds no receipts. Torn or damaged lines are left out and told to the log once
// a process, in one line with the file, their count and the first of them.
class ReceiptManager {
 public:
  ReceiptManager(std::filesystem::path file, Files& files, LogSink& log);

  // Newest first.
  [[nodiscard]] Receipts readReceipts(const Label& label) const;
  [[nodiscard]] Receipts readAllReceipts() const;

  // For the helper: one write, on disk when it returns.
  [[nodiscard]] Status append(const PatchingReceipt& receipt);

  [[nodiscard]] const std::filesystem::path& file() const { return file_.path(); }

 private:
  [[nodiscard]] Receipts read(const Label* only) const;

  JsonLinesFile file_;
  Files& files_;
};

}  // namespace corvane
