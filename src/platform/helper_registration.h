// How the platform knows the root helper's daemon.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

enum class HelperStatus { enabled, requiresApproval, notRegistered, notFound, unknown };

// Main thread. `status` answers at once, from memory or one system call.
class HelperRegistration {
 public:
  virtual ~HelperRegistration() = default;
  [[nodiscard]] virtual HelperStatus status() const = 0;
  // May leave the status at requiresApproval.
  virtual Status registerDaemon() = 0;
  // Stops the daemon and takes its registration away.
  virtual void unregisterDaemon(Completion<Status> done) = 0;
  // Starts the registered daemon when it does not run. Absent when the service manager cannot be asked.
  virtual std::optional<std::int32_t> kickstart() = 0;
  // 0 when the daemon is loaded. Absent when the service manager cannot be asked.
  [[nodiscard]] virtual std::optional<std::int32_t> printExitCode() const = 0;
  // Where the user lets the daemon run.
  virtual void openSettings() = 0;
};

}  // namespace corvane
