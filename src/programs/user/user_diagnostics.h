// The diagnostic bundle over the real machine of a user's program.
#pragma once

#include <filesystem>
#include <memory>

#include "app/diagnostic_job.h"
#include "app/services.h"
#include "diagnostics/diagnostic_bundle_service.h"
#include "platform/posix/system_accounts.h"
#include "platform/uv/uv_child_processes.h"
#include "programs/user/user_machine.h"

namespace corvane {

// Made where a bundle is asked for: children cost a program nothing before. Machine and services outlive it.
class UserDiagnostics {
 public:
  // On another root than "/" the person at the screen is whoever runs the program.
  UserDiagnostics(UserMachine& machine, const Services& services);

  [[nodiscard]] HomeOf homes() const;
  [[nodiscard]] DiagnosticWriter writer();

 private:
  SystemAccounts accounts_;
  std::unique_ptr<ConsoleSessions> console_;
  UvChildProcesses children_;

 public:
  DiagnosticBundleService service;
};

}  // namespace corvane
