// How the inventory comes to be: passes of the helper, the direct scan when it cannot be reached, and what is
// done with their answers. It refuses no start: callers have tested the gate, and generations sort overlapping passes.
#pragma once

#include <memory>
#include <vector>

#include "workflow/room_context.h"

namespace corvane {

// One pass as its caller wants it.
struct DiscoveryRequest {
  bool includeLatestVersions = false;
  DiscoveryOperation operation = DiscoveryOperation::checkUpdates;
  std::optional<Labels> labelsFilter;  // only with latest versions; empty answers with the current inventory
  bool forceFullDiscovery = false;
  Task completion;  // may be empty; dropped when a direct scan takes over
};

class DiscoveryPipeline {
 public:
  // A check is slow, not broken, so it only gets a word; an inventory that takes this long has no helper behind it.
  static constexpr Duration kCheckTakesLong = 90s;
  static constexpr Duration kInventoryTimeout = 15s;

  DiscoveryPipeline(const RoomContext& context, DiscoveryFields& fields);

  void startDiscovery(DiscoveryRequest request);
  void discoverInstalledApps();
  void checkForUpdates();
  void checkForUpdates(const Labels& labels);
  void forceRecheck(const Label& label);
  void forceRecheckAllAlerts();
  void applyScheduledDiscoveryInventory();
  void loadStatus();

 private:
  // What a pass carries from start to finish.
  struct Pass {
    std::int64_t generation = 0;
    DiscoveryRequest request;
    [[nodiscard]] bool isScoped() const { return request.labelsFilter && !request.labelsFilter->empty(); }
  };
  // Which work was under way at a moment, to see later whether something new was set off.
  struct Mark {
    std::int64_t generation = 0;
    std::uint64_t runs = 0;
    friend bool operator==(const Mark&, const Mark&) = default;
  };
  struct Watchdog {
    bool fired = false;
    Lease alarm;
  };

  void send(Pass pass);
  void answerWithCurrentApps(Pass pass);
  void armWatchdog(std::int64_t generation, bool includeLatestVersions);
  void warnSlowCheck();
  void giveUpWaiting(std::int64_t generation);

  void handleAnswer(Pass pass, Result<Apps> answer);
  void succeeded(Pass pass, const Apps& records);
  void failed(Pass pass, const Error& error);
  void failedForGood(Pass pass, std::string text);
  void takeInventory(const Pass& pass, const Apps& records);
  void recordDates(const Pass& pass);
  void reportCheck(const Pass& pass, const Apps& records);
  void finish(Pass pass, bool foundAny, bool takenOver);

  void startDirectDiscovery(std::int64_t generation);
  void directSucceeded(std::int64_t generation, const Apps& records);
  void directFailed(std::int64_t generation, const Error& error);
  void chainCheck(std::string_view reason);

  void settleEmptyDiscovery();
  void countExcludedApps(const CorvaneConfiguration& config);
  void end(std::optional<std::string> status, std::optional<std::string> error);
  void close();

  [[nodiscard]] bool fullDiscoveryNeeded(const CorvaneConfiguration& config);
  [[nodiscard]] bool sideEffectsOwnTheEnding() const;
  [[nodiscard]] bool helperIsReady() const;
  [[nodiscard]] Apps withoutIgnored(const Apps& records, const CorvaneConfiguration& config) const;
  [[nodiscard]] Mark mark() const {
    return {.generation = fields_.discoveryGeneration, .runs = c_.gate.ownRunsStarted()};
  }

  RoomContext c_;
  DiscoveryFields& fields_;
  std::vector<std::unique_ptr<Watchdog>> watchdogs_;  // several sleep at once by design
  Lifeline lifeline_;
};

}  // namespace corvane
