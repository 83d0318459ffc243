// What the machine runs on, as the desktop's power service tells it.
#pragma once

#include <optional>

#include "base/lifeline.h"
#include "platform/dbus/bus_name_watch.h"
#include "platform/power_source.h"

namespace corvane {

// Answers from memory, which the service's signals keep current; by `otherwise`, which outlives this, while the service
// has not answered, and where there is none. Starts no service.
class UPowerSource final : public PowerSource {
 public:
  UPowerSource(BusLink& system, const PowerSource& otherwise);

  [[nodiscard]] bool isOnACPower() const override;

 private:
  void look();

  BusLink& system_;
  const PowerSource& otherwise_;
  std::optional<bool> onBattery_;
  Lease changed_;
  BusNameWatch service_;
  Lifeline lifeline_;
};

}  // namespace corvane
