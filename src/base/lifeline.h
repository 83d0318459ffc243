// Guards calls that may outlive the object they belong to.
#pragma once

#include <memory>
#include <utility>

#include "base/task.h"

namespace corvane {

// An owner's last member. A call guarded by it is dropped once the owner has gone, or runs its
// `otherwise` instead, which gives back a token or writes the log line that is due. Main thread only.
class Lifeline {
 public:
  Lifeline() : alive_(std::make_shared<bool>(true)) {}
  ~Lifeline() { *alive_ = false; }
  Lifeline(const Lifeline&) = delete;
  Lifeline& operator=(const Lifeline&) = delete;

  template <class F>
  [[nodiscard]] auto guard(F call) const {
    return [alive = alive_, call = std::move(call)](auto&&... args) mutable {
      if (*alive) call(std::forward<decltype(args)>(args)...);
    };
  }

  template <class F, class G>
  [[nodiscard]] auto guard(F call, G otherwise) const {
    return [alive = alive_, call = std::move(call), otherwise = std::move(otherwise)](auto&&... args) mutable {
      if (*alive)
        call(std::forward<decltype(args)>(args)...);
      else
        otherwise();
    };
  }

 private:
  std::shared_ptr<bool> alive_;
};

}  // namespace corvane
