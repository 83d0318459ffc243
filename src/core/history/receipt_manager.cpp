#include "core/history/receipt_manager.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "core/history/receipt_reader.h"

namespace corvane {
namespace {

constexpr mode_t kReceiptsMode = 0644;
// Past so many damaged lines a file is damaged as a whole, and one more line in the log says so.
constexpr std::size_t kMostToldLines = 100;

}  // namespace

ReceiptManager::ReceiptManager(std::filesystem::path file, Files& files, LogSink& log)
    : file_(std::move(file)), files_(files), log_(log, "ReceiptManager") {}

Receipts ReceiptManager::readReceipts(const Label& label) const { return read(&label); }

Receipts ReceiptManager::readAllReceipts() const { return read(nullptr); }

Status ReceiptManager::append(const PatchingReceipt& receipt) {
  const auto line = writeJson(toJson(receipt));
  const std::lock_guard lock(mutex_);
  if (auto appended = appender_.append(files_, file_, line, kReceiptsMode); !appended) return appended;
  return files_.sync(file_);
}

Receipts ReceiptManager::read(const Label* only) const {
  const auto text = readNewestLines(files_, file_);
  if (!text) {
    if (files_.exists(file_)) tellDamaged(0, text.error().text);
    return {};
  }
  auto receipts =
      parseReceipts(*text, only, [this](std::size_t line, std::string_view reason) { tellDamaged(line, reason); });
  if (!std::ranges::is_sorted(receipts, std::greater{}, &PatchingReceipt::timestamp))
    std::ranges::stable_sort(receipts, std::greater{}, &PatchingReceipt::timestamp);
  return receipts;
}

// Line 0 stands for the file as a whole.
void ReceiptManager::tellDamaged(std::size_t line, std::string_view reason) const {
  {
    const std::lock_guard lock(mutex_);
    if (toldLines_.size() > kMostToldLines || !toldLines_.insert(line).second) return;
    if (toldLines_.size() > kMostToldLines) reason = "and further damaged lines are not told";
  }
  if (line == 0)
    log_.warning(fmt::format("Could not read {}: {}", file_.string(), reason));
  else
    log_.warning(fmt::format("Left out line {} of {}: {}", line, file_.string(), reason));
}

}  // namespace corvane
