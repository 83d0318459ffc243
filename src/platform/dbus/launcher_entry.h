// The number on the application's icon in docks and task bars.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/lease.h"
#include "platform/dbus/bus_link.h"

namespace corvane {

// Main thread. Tells whoever listens on the session bus by the signal that docks have agreed on, and again when the
// bus comes back. Whether anybody listens cannot be known. The label goes with this object.
class LauncherEntry {
 public:
  explicit LauncherEntry(BusLink& session);
  ~LauncherEntry();
  LauncherEntry(const LauncherEntry&) = delete;
  LauncherEntry& operator=(const LauncherEntry&) = delete;

  // Docks show whole numbers only: any other label shows none, as an absent one does.
  void show(const std::optional<std::string>& label);

 private:
  void tell();

  BusLink& session_;
  std::optional<std::int64_t> count_;
  Lease connection_;
};

}  // namespace corvane
