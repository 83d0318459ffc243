// The applications, their counts, the dates of the last looks, and the cached histories of their labels. It
// starts no check and no run; what fresh counts set off it only announces.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "workflow/room_context.h"

namespace corvane {

class Inventory {
 public:
  Inventory(const RoomContext& context, InventoryFields& fields);

  // The stored list without ignored labels, the dates, and the counts. Touches neither badge nor store.
  void load();

  [[nodiscard]] AppFacts facts() const;
  [[nodiscard]] std::optional<std::string> computeCycleCompletionMessage() const;

  void replaceApps(Apps apps);
  void recomputeCounts(SideEffects sideEffects);
  void storeApps();
  // Computed anew: what is installed may have changed since the pass began.
  void storeFingerprint();
  void recordDiscovery(Date when);
  void recordUpdateCheck(Date when);
  void updateDockBadge();
  void refreshDeadlineDisplay();
  void applyIgnoredLabelsToApps();

  void invalidateReceiptCaches();
  void forgetDeferralEvents() { deferralEvents_.clear(); }
  [[nodiscard]] std::vector<PatchingReceipt> receipts(const Label& label, std::size_t limit);
  [[nodiscard]] std::vector<DeferralEventRecord> deferralEvents(const Label& label, std::size_t limit);

 private:
  // Answers for the bundles of one inventory: a bundle's receipt is looked for once, not at every count.
  struct StoreReceipts {
    std::unordered_map<std::string, bool> byPath;
  };

  void assignCounts();
  // When the next cycle starts; absent while this one is not complete.
  [[nodiscard]] std::optional<Date> completeUntil(const CorvaneConfiguration& config, const CadenceState& state) const;
  [[nodiscard]] std::string completionMessage(Date next) const;
  void showCompletion(std::optional<Date> next, const Calendar& calendar);

  RoomContext c_;
  InventoryFields& fields_;
  std::shared_ptr<StoreReceipts> storeReceipts_ = std::make_shared<StoreReceipts>();
  std::chrono::year_month_day dayShown_{};  // named by the message that is shown
  mutable std::shared_ptr<const LatestReceipts> latestReceipts_;
  std::map<Label, std::vector<PatchingReceipt>> receipts_;
  std::map<Label, std::vector<DeferralEventRecord>> deferralEvents_;
};

}  // namespace corvane
