// The two kinds of deferred calls. A Task may run or be dropped; a Completion runs exactly once.
#pragma once

#include <cassert>
#include <functional>
#include <utility>

namespace corvane {

// A call to be made later. Dropping it unrun is always allowed.
using Task = std::move_only_function<void()>;

// The one answer to an asynchronous request. Running it twice or dropping it unrun is a bug of ours and
// asserted. Moved-from completions are empty. Threads: the operation that takes one says where it runs.
template <class... Args>
class Completion {
 public:
  Completion() = default;

  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, Completion> && std::is_invocable_v<F&, Args...>) Completion(F&& call)
      : call_(std::forward<F>(call)) {}  // NOLINT(google-explicit-constructor)

  Completion(Completion&& other) noexcept : call_(std::exchange(other.call_, nullptr)) {}
  Completion& operator=(Completion&& other) noexcept {
    assert(!call_ && "a completion was overwritten before it ran");
    call_ = std::exchange(other.call_, nullptr);
    return *this;
  }
  ~Completion() { assert(!call_ && "a completion was dropped without having run"); }

  explicit operator bool() const { return static_cast<bool>(call_); }

  void operator()(Args... args) {
    assert(call_ && "a completion ran twice");
    auto call = std::exchange(call_, nullptr);
    call(std::forward<Args>(args)...);
  }

  // Gives the call up on purpose, at teardown, when nobody is left to hear the answer.
  void abandon() { call_ = nullptr; }

 private:
  std::move_only_function<void(Args...)> call_;
};

}  // namespace corvane
