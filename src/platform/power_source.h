// What the machine runs on.
#pragma once

namespace corvane {

// Main thread; answered at once.
class PowerSource {
 public:
  virtual ~PowerSource() = default;

  // True for a machine without a battery, and when it cannot be told.
  [[nodiscard]] virtual bool isOnACPower() const = 0;
};

}  // namespace corvane
