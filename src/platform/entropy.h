// Chance, so that tests can have none.
#pragma once

#include <cstdint>

#include "base/uuid.h"

namespace corvane {

// Any thread.
class Entropy {
 public:
  virtual ~Entropy() = default;
  [[nodiscard]] virtual Uuid uuid() = 0;
  // Uniform in [0, bound); 0 for a bound of 0.
  [[nodiscard]] virtual std::uint64_t below(std::uint64_t bound) = 0;
};

}  // namespace corvane
