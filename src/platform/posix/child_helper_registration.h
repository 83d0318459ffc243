// The helper as a daemon of the one user, for machines on which no system helper is installed. A record file
// stands for the registration; there is no service manager behind it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/lease.h"
#include "base/main_queue.h"
#include "platform/helper_registration.h"
#include "platform/posix/detached_process.h"

namespace corvane {

// What the service manager of the design answers for a daemon that it does not know.
constexpr std::int32_t kDaemonNotLoaded = 113;
constexpr Duration kHelperStopLimit = 5s;  // from the polite signal to the forced one

// The daemon outlives this program on purpose. A recorded process is believed to be ours only while its start
// time is the recorded one. A damaged record counts as registered and not running.
class ChildHelperRegistration final : public HelperRegistration {
 public:
  // `record` lies in the user's support folder, which is made when missing (mode 0755).
  ChildHelperRegistration(MainQueue& main, DetachedProgram helper, std::filesystem::path record);
  ~ChildHelperRegistration() override;

  // notFound without the helper's binary, notRegistered without the record, otherwise enabled.
  [[nodiscard]] HelperStatus status() const override;
  // Starts the helper, or finds the recorded one running, and writes the record.
  Status registerDaemon() override;
  // Asks the helper to end, forces it after 5 s, and removes the record when it has gone. Calls that come
  // while one is under way end with it.
  void unregisterDaemon(Completion<Status> done) override;
  // 0 when the helper runs afterwards, kDaemonNotLoaded when none is registered, errno when it did not start.
  std::optional<std::int32_t> kickstart() override;
  // 0 when the helper runs, otherwise kDaemonNotLoaded.
  [[nodiscard]] std::optional<std::int32_t> printExitCode() const override;
  // Nothing to open: the user's own daemon needs nobody's approval.
  void openSettings() override {}

 private:
  struct Record {
    pid_t pid = 0;
    std::string stamp;
  };
  [[nodiscard]] std::optional<Record> readRecord() const;
  [[nodiscard]] std::optional<pid_t> runningPid() const;
  Status startAndRecord();
  void checkStopped();
  void finishUnregister();

  MainQueue& main_;
  DetachedProgram helper_;
  std::filesystem::path record_;
  std::vector<Completion<Status>> waiting_;
  int checksLeft_ = 0;
  Lease nextCheck_;
};

}  // namespace corvane
