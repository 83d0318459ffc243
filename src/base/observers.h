// Those who want to hear of a change.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/lease.h"
#include "base/lifeline.h"

namespace corvane {

// One thread. An observer may end its own subscription or make a new one while it is told; a new one hears of the next
// change. A lease may outlive the list.
class Observers {
 public:
  [[nodiscard]] Lease add(std::function<void()> changed) {
    auto observer = std::make_shared<std::function<void()>>(std::move(changed));
    change([&](Round& round) { round.push_back(observer); });
    return Lease(lifeline_.guard([this, observer] {
      *observer = nullptr;
      change([&](Round& round) { std::erase(round, observer); });
    }));
  }
  void tell() {
    const auto round = round_;
    for (const auto& observer : *round)
      if (*observer) (*observer)();
  }

 private:
  using Round = std::vector<std::shared_ptr<std::function<void()>>>;

  // Copied here, seldom, so that telling them copies nothing.
  template <class Change>
  void change(Change change) {
    auto round = *round_;
    change(round);
    round_ = std::make_shared<const Round>(std::move(round));
  }

  std::shared_ptr<const Round> round_ = std::make_shared<const Round>();
  Lifeline lifeline_;
};

}  // namespace corvane
