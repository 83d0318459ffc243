// A lock whose answer a test sets.
#pragma once

#include <functional>
#include <utility>

#include "platform/session_lock.h"

namespace corvane {

struct SetLock final : SessionLock {
  Attempt answer;
  Attempt answerAfterWaiting;
  int taken = 0;
  int waits = 0;
  std::function<void()> onTake;
  std::filesystem::path file = "/Users/ada/Library/Application Support/Corvane/gui.instance.lock";

  [[nodiscard]] Attempt take() override {
    ++taken;
    if (onTake) onTake();
    return answer;
  }
  [[nodiscard]] Attempt takeExisting() override { return take(); }
  [[nodiscard]] Attempt takeShared() override { return take(); }
  [[nodiscard]] Attempt awaitShared() override {
    ++waits;
    return answerAfterWaiting;
  }
  [[nodiscard]] const std::filesystem::path& path() const override { return file; }
};

}  // namespace corvane
