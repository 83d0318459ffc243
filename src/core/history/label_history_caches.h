// What the receipts say of each label, kept until the receipts change.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "core/history/receipt_manager.h"
#include "core/policies/label_history.h"

namespace corvane {

// The newest receipt of each label.
using LatestReceipts = std::unordered_map<Label, PatchingReceipt>;

// The receipts read at most once for each state of their file (time of change and size), for all the caches.
// Any thread; what was handed out stays valid.
class ReceiptsSnapshot {
 public:
  ReceiptsSnapshot(const ReceiptManager& receipts, const Files& files) : receipts_(receipts), files_(files) {}

  struct Histories {
    LabelFailureHistory::Records failures;
    LabelInstallHistory::History installs;
    LatestReceipts latest;
  };
  [[nodiscard]] std::shared_ptr<const Histories> histories() const;

 private:
  struct Stamp {
    std::optional<Date> modified;
    std::optional<std::uint64_t> size;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };

  const ReceiptManager& receipts_;
  const Files& files_;
  mutable std::mutex mutex_;
  mutable std::optional<Stamp> stamp_;
  mutable std::shared_ptr<const Histories> histories_;
};

class LabelFailureHistoryCache {
 public:
  explicit LabelFailureHistoryCache(const ReceiptsSnapshot& snapshot) : snapshot_(snapshot) {}
  [[nodiscard]] LabelFailureHistory::Records records() const { return snapshot_.histories()->failures; }

 private:
  const ReceiptsSnapshot& snapshot_;
};

class LabelInstallHistoryCache {
 public:
  explicit LabelInstallHistoryCache(const ReceiptsSnapshot& snapshot) : snapshot_(snapshot) {}
  [[nodiscard]] LabelInstallHistory::History history() const { return snapshot_.histories()->installs; }

 private:
  const ReceiptsSnapshot& snapshot_;
};

class LatestReceiptsCache {
 public:
  explicit LatestReceiptsCache(const ReceiptsSnapshot& snapshot) : snapshot_(snapshot) {}
  // Never null.
  [[nodiscard]] std::shared_ptr<const LatestReceipts> receipts() const {
    auto histories = snapshot_.histories();
    const auto* latest = &histories->latest;
    return {std::move(histories), latest};
  }

 private:
  const ReceiptsSnapshot& snapshot_;
};

}  // namespace corvane
