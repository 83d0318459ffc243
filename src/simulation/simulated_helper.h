// A root helper inside the process. How it behaves is data; it keeps its own list of what is installed and what the
// vendors offer.
#pragma once

#include <functional>
#include <list>
#include <set>
#include <string>
#include <vector>

#include "base/lease.h"
#include "base/main_queue.h"
#include "core/client/xpc_service_client.h"
#include "core/history/receipt_manager.h"
#include "platform/clock.h"

namespace corvane {

struct SimulatedApp {
  std::string label;
  std::string installed = "1.0";
  std::string latest = "1.0";
};

// Main thread. An answer tells what is so when it is given, not when it was asked for. What is unanswered at the end
// is abandoned.
class SimulatedHelper final : public XPCServiceClient {
 public:
  struct Behaviour {
    Duration checkTakes = 5s;
    Duration installTakes = 60s;          // a label
    std::set<std::string> failingChecks;  // labels
    std::set<std::string> failingInstalls;
    bool busy = false;        // refuses runs at once
    bool outOfReach = false;  // every request fails after `checkTakes`
  };

  SimulatedHelper(MainQueue& main, const Clock& clock, ReceiptManager& receipts)
      : main_(main), clock_(clock), receipts_(receipts) {}
  ~SimulatedHelper() override;

  Behaviour behaviour;
  std::vector<SimulatedApp> apps;
  // A run was asked for, with how many runs were already out; and one has ended.
  std::function<void(const Labels& labels, int others)> onRun;
  std::function<void(const Labels& installed, const Labels& failed)> onRunEnded;

  // The records of a check of these labels at this moment; of all applications without labels.
  [[nodiscard]] Apps check(const Labels& labels, bool latestVersions = true) const;
  [[nodiscard]] int runsOut() const { return runsOut_; }

  void getStatus(Completion<Result<StatusInfo>> done) override;
  void discoverInstalledApps(Completion<Result<Apps>> done) override;
  void discoverAppsWithUpdates(Completion<Result<Apps>> done) override;
  void discoverAppsForLabels(const Labels& labels, bool latestVersions, Completion<Result<Apps>> done) override;
  void startPatching(const Labels& labels, const Labels& alsoStageLabels,
                     Completion<Result<PatchRunAnswer>> done) override;
  void getPatchingProgress(Completion<PatchProgressInfo> done) override;

 private:
  template <class Answer>
  struct Waiting {
    Completion<Answer> done;
    Lease alarm;
  };
  template <class Answer>
  using Queue = std::list<Waiting<Answer>>;

  template <class Answer>
  void answerAfter(Queue<Answer>& queue, Duration delay, Completion<Answer> done, std::function<Answer()> make);
  void discover(Labels labels, bool latestVersions, Completion<Result<Apps>> done);
  PatchRunAnswer install(const Labels& labels);
  [[nodiscard]] std::unexpected<Error> refusal() const;

  MainQueue& main_;
  const Clock& clock_;
  ReceiptManager& receipts_;
  int runsOut_ = 0;
  Queue<Result<StatusInfo>> statuses_;
  Queue<Result<Apps>> checks_;
  Queue<Result<PatchRunAnswer>> runs_;
  Queue<PatchProgressInfo> polls_;
};

}  // namespace corvane
