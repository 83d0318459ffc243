// Chance that repeats.
#pragma once

#include <mutex>

#include "platform/entropy.h"

namespace corvane {

// The same seed gives the same row of values, on every machine.
class ScriptedEntropy final : public Entropy {
 public:
  explicit ScriptedEntropy(std::uint64_t seed = 1) : state_(seed) {}

  [[nodiscard]] Uuid uuid() override;
  [[nodiscard]] std::uint64_t below(std::uint64_t bound) override;

 private:
  [[nodiscard]] std::uint64_t next();

  std::mutex mutex_;
  std::uint64_t state_;
};

}  // namespace corvane
