#include "core/history/label_history_caches.h"

namespace corvane {

namespace {

// `receipts` stand newest first.
LatestReceipts newestOfEach(const Receipts& receipts) {
  LatestReceipts latest;
  for (const auto& receipt : receipts) latest.try_emplace(receipt.label, receipt);
  return latest;
}

}  // namespace

// The stamp is taken before the read, so that a receipt appended meanwhile is read again, not missed.
std::shared_ptr<const ReceiptsSnapshot::Histories> ReceiptsSnapshot::histories() const {
  const Stamp stamp{files_.modified(receipts_.file()), files_.size(receipts_.file())};
  {
    const std::lock_guard lock(mutex_);
    if (histories_ && stamp_ == stamp) return histories_;
  }
  const auto receipts = receipts_.readAllReceipts();
  auto fresh = std::make_shared<const Histories>(Histories{.failures = LabelFailureHistory::failureRecords(receipts),
                                                           .installs = LabelInstallHistory::installHistory(receipts),
                                                           .latest = newestOfEach(receipts)});
  const std::lock_guard lock(mutex_);
  stamp_ = stamp;
  histories_ = fresh;
  return fresh;
}

}  // namespace corvane
