// How the platform knows the root helper's daemon.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

// What the service manager of the design answers for a daemon that it does not know.
inline constexpr std::int32_t kDaemonNotLoaded = 113;

enum class HelperStatus { enabled, requiresApproval, notRegistered, notFound, unknown };

// Main thread. `status` answers at once, from memory or one system call. Contract suite:
// tests/support/helper_registration_contract.h.
class HelperRegistration {
 public:
  virtual ~HelperRegistration() = default;
  [[nodiscard]] virtual HelperStatus status() const = 0;
  // May leave the status at requiresApproval.
  virtual Status registerDaemon() = 0;
  // Stops the daemon and takes its registration away.
  virtual void unregisterDaemon(Completion<Status> done) = 0;
  // Starts the registered daemon when it does not run; one that runs goes on, since it may be in the midst of an
  // install. kDaemonNotLoaded when none is registered. Absent when the service manager cannot be asked.
  virtual std::optional<std::int32_t> kickstart() = 0;
  // 0 when the daemon runs or is about to, otherwise kDaemonNotLoaded. Absent when the service manager cannot be asked.
  [[nodiscard]] virtual std::optional<std::int32_t> printExitCode() const = 0;
  // Where the user lets the daemon run.
  virtual void openSettings() = 0;
};

}  // namespace corvane
