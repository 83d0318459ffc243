// A preference domain in memory.
#pragma once

#include <mutex>
#include <optional>
#include <vector>

#include "base/main_queue.h"
#include "platform/preference_domains.h"

namespace corvane {

class ScriptedPreferenceDomains final : public PreferenceDomains {
 public:
  explicit ScriptedPreferenceDomains(MainQueue& main) : main_(main) {}

  // Another program's change: the watchers hear of it in a later turn. Main thread.
  void setUser(PlistDict values);
  void setManaged(PlistDict values);
  // Makes changeUser fail with this error until an absent one takes it away; nothing is changed then.
  void failChanges(std::optional<Error> error);

  [[nodiscard]] DomainSnapshot user() const override;
  [[nodiscard]] DomainSnapshot managed() const override;
  [[nodiscard]] Versions versions() const override;
  Status changeUser(const std::function<void(PlistDict&)>& change) override;
  Lease watch(std::function<void()> changed) override;

 private:
  void adopt(DomainSnapshot& snapshot, PlistDict values);
  void tellWatchers();

  MainQueue& main_;
  std::mutex changing_;  // held over a whole change, as the real lock between processes is
  mutable std::mutex mutex_;
  DomainSnapshot user_{std::make_shared<PlistDict>(), 1};
  DomainSnapshot managed_{std::make_shared<PlistDict>(), 1};
  std::uint64_t nextVersion_ = 2;
  std::optional<Error> failure_;
  struct Watcher {
    std::function<void()> changed;
    bool live = true;
    bool told = false;
  };
  std::vector<std::shared_ptr<Watcher>> watchers_;
};

}  // namespace corvane
