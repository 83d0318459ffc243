// The receipts of patch runs: one JSON object a line, appended by the helper, read by everybody.
#pragma once

#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/error.h"
#include "core/history/json_lines.h"
#include "core/logging/logging_service.h"
#include "core/records/history_records.h"
#include "platform/files.h"

namespace corvane {

using Receipts = std::vector<PatchingReceipt>;

// Any thread. A missing file holds no receipts. A torn or damaged line is left out and told to the log once
// a process, with file and line.
class ReceiptManager {
 public:
  ReceiptManager(std::filesystem::path file, Files& files, LogSink& log);

  // Newest first.
  [[nodiscard]] Receipts readReceipts(const Label& label) const;
  [[nodiscard]] Receipts readAllReceipts() const;

  // For the helper: one write, on disk when it returns. A line that an earlier crash left torn is closed first,
  // so that it costs itself only.
  [[nodiscard]] Status append(const PatchingReceipt& receipt);

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }

 private:
  [[nodiscard]] Receipts read(const Label* only) const;
  void tellDamaged(std::size_t line, std::string_view reason) const;

  std::filesystem::path file_;
  Files& files_;
  Logger log_;
  mutable std::mutex mutex_;
  mutable std::set<std::size_t> toldLines_;
  LineAppender appender_;
};

}  // namespace corvane
