// The real machine under a user's program: every port's adapter, made once. The application and the command
// line differ in nothing here.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/services.h"
#include "base/error.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "platform/helper_registration.h"
#include "platform/linux/linux_locale.h"
#include "platform/linux/linux_running_applications.h"
#include "platform/linux/sys_power_source.h"
#include "platform/posix/executable_bundle.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_preference_domains.h"
#include "platform/posix/process_application.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/system_entropy.h"
#include "platform/uv/uv_file_watch.h"
#include "platform/uv/uv_helper_channel.h"
#include "platform/uv/uv_main_loop.h"
#include "platform/uv/uv_work_queue.h"

namespace corvane {

class UserMachine {
 public:
  // Where the root is the machine's own, asks the service manager for the helper's unit, for 600 ms at most.
  // `executable`: tells the bundle that this program speaks for.
  explicit UserMachine(CorvaneConstants places,
                       const std::filesystem::path& executable = ExecutableBundle::runningExecutable());

  // `focus` is asked before a prompt opens by itself, so only the application brings the desktop's own; `power` is the
  // desktop's word where the application has it.
  [[nodiscard]] Ports ports(FocusState& focus, PowerSource& power);
  [[nodiscard]] Ports ports(FocusState& focus) { return ports(focus, power); }

  CorvaneConstants places;
  SystemClock clock;
  UvMainLoop loop;
  PosixFiles files;
  SystemEntropy entropy;
  LinuxLocale locale;
  LoggingService log;
  ExecutableBundle bundle;
  UvFileWatch watch;
  PosixPreferenceDomains domains;
  LinuxRunningApplications processes;
  ProcessApplication application;
  SysPowerSource power;
  UvHelperChannel channel;
  InstanceLock lock;
  InstanceLock stateLock;
  UvWorkQueue work;
  std::unique_ptr<HelperRegistration> registration;
};

// Of programs that open nothing by themselves: what they do was just asked for, and disturbs nobody.
class AskedFor final : public FocusState {
 public:
  [[nodiscard]] std::optional<bool> doNotDisturb() const override { return false; }
  [[nodiscard]] std::optional<std::vector<std::string>> displaySleepHolders() const override {
    return std::vector<std::string>();
  }
};

}  // namespace corvane
