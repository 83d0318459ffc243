// Broadcasts inside the process, by type.
#pragma once

#include <functional>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/lease.h"
#include "base/main_queue.h"

namespace corvane {

// A notification is a plain struct; its type is its name. Observers run on the main thread in the order
// of their subscription: within `post` when it is called there, in a later turn otherwise. `observe` is
// main thread only, `post` any thread. An observer that is cancelled while a post goes round is not called.
class NotificationCenter {
 public:
  explicit NotificationCenter(MainQueue& main) : main_(main) {}

  template <class N>
  void post(N notification) {
    if (main_.isMainThread()) {
      deliver(notification);
    } else {
      main_.post([this, notification = std::move(notification)] { deliver(notification); });
    }
  }

  template <class N>
  [[nodiscard]] Lease observe(std::function<void(const N&)> observer) {
    auto slot = std::make_shared<Slot>();
    slot->call = [observer = std::move(observer)](const void* n) { observer(*static_cast<const N*>(n)); };
    slots_[typeid(N)].push_back(slot);
    return Lease([this, weak = std::weak_ptr(slot)] {
      if (auto live = weak.lock()) remove(typeid(N), live);
    });
  }

 private:
  struct Slot {
    std::function<void(const void*)> call;
    bool live = true;
  };
  using Slots = std::vector<std::shared_ptr<Slot>>;

  template <class N>
  void deliver(const N& notification) {
    const auto found = slots_.find(typeid(N));
    if (found == slots_.end()) return;
    const Slots round = found->second;
    for (const auto& slot : round)
      if (slot->live) slot->call(&notification);
  }

  void remove(std::type_index type, const std::shared_ptr<Slot>& slot) {
    slot->live = false;
    std::erase(slots_[type], slot);
  }

  MainQueue& main_;
  std::unordered_map<std::type_index, Slots> slots_;
};

}  // namespace corvane
