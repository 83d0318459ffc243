#include "core/history/receipt_manager.h"

#include <algorithm>
#include <functional>

#include "core/history/receipt_reader.h"

namespace corvane {
namespace {

constexpr mode_t kReceiptsMode = 0644;

}  // namespace

ReceiptManager::ReceiptManager(std::filesystem::path file, Files& files, LogSink& log)
    : file_(std::move(file), kReceiptsMode, files, Logger(log, "ReceiptManager")), files_(files) {}

Receipts ReceiptManager::readReceipts(const Label& label) const { return read(&label); }

Receipts ReceiptManager::readAllReceipts() const { return read(nullptr); }

Status ReceiptManager::append(const PatchingReceipt& receipt) {
  if (auto appended = file_.append(writeJson(toJson(receipt))); !appended) return appended;
  return files_.sync(file_.path());
}

Receipts ReceiptManager::read(const Label* only) const {
  DamagedLines damaged;
  auto receipts = parseReceipts(file_.newestLines(), only,
                                [&](std::size_t line, std::string_view reason) { damaged.add(line, reason); });
  file_.tellDamaged(damaged);
  if (!std::ranges::is_sorted(receipts, std::greater{}, &PatchingReceipt::timestamp))
    std::ranges::stable_sort(receipts, std::greater{}, &PatchingReceipt::timestamp);
  return receipts;
}

}  // namespace corvane
