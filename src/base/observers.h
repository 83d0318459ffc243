// Those who want to hear of a change.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <utility>

#include "base/lease.h"
#include "base/lifeline.h"

namespace corvane {

// One thread. An observer may end its own subscription or make a new one while it is told; a new one hears of the next
// change. A lease may outlive the list.
class Observers {
 public:
  [[nodiscard]] Lease add(std::function<void()> changed) {
    auto observer = std::make_shared<std::function<void()>>(std::move(changed));
    list_.push_back(observer);
    return Lease(lifeline_.guard([this, observer] {
      *observer = nullptr;
      list_.remove(observer);
    }));
  }
  void tell() {
    const auto round = list_;
    for (const auto& observer : round)
      if (*observer) (*observer)();
  }

 private:
  std::list<std::shared_ptr<std::function<void()>>> list_;
  Lifeline lifeline_;
};

}  // namespace corvane
