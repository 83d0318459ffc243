// Chance from the kernel.
#pragma once

#include "platform/entropy.h"

namespace corvane {

class SystemEntropy final : public Entropy {
 public:
  [[nodiscard]] Uuid uuid() override;
  [[nodiscard]] std::uint64_t below(std::uint64_t bound) override;
};

}  // namespace corvane
