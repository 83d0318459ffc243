// Who owns a name on a bus, kept current. Starts no service.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/lease.h"
#include "base/lifeline.h"
#include "platform/dbus/bus_link.h"

namespace corvane {

// Main thread. The link outlives it.
class BusNameWatch {
 public:
  // `changed` runs in a later turn when it becomes known who owns the name, and with each change.
  BusNameWatch(BusLink& link, std::string name, std::function<void()> changed);

  // False until the bus has answered, or could not be reached.
  [[nodiscard]] bool isKnown() const { return known_; }
  // A unique name; absent while nobody owns the name, and without a bus.
  [[nodiscard]] const std::optional<std::string>& owner() const { return owner_; }

 private:
  void look();
  void now(std::optional<std::string> owner);

  BusLink& link_;
  std::string name_;
  std::function<void()> changed_;
  bool known_ = false;
  std::optional<std::string> owner_;
  Lease signal_;
  Lease connection_;
  Lifeline lifeline_;
};

}  // namespace corvane
