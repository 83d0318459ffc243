// The power supplies as the kernel tells of them.
#pragma once

#include <filesystem>

#include "platform/power_source.h"

namespace corvane {

// Reads the folder at each question: a handful of small files. On AC power when a supply of the machine other than its
// batteries is online, or when no battery of the machine itself is there; batteries of mice and the like do not count.
class SysPowerSource final : public PowerSource {
 public:
  explicit SysPowerSource(std::filesystem::path supplies = "/sys/class/power_supply")
      : supplies_(std::move(supplies)) {}
  [[nodiscard]] bool isOnACPower() const override;

 private:
  std::filesystem::path supplies_;
};

}  // namespace corvane
