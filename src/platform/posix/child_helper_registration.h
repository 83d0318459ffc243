// The helper as a daemon of the one user, for machines on which no system helper is installed. A record file
// stands for the registration; there is no service manager behind it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/lease.h"
#include "base/main_queue.h"
#include "platform/helper_registration.h"
#include "platform/posix/detached_process.h"

namespace corvane {

constexpr Duration kHelperStopLimit = 5s;  // from the polite signal to the forced one

// The daemon outlives this program on purpose. A recorded process is believed to be ours only while its start
// time is the recorded one. A damaged record is told to the log, and counts as registered; then the helper that runs is
// the one that listens on the socket. Main thread.
class ChildHelperRegistration final : public HelperRegistration {
 public:
  struct Paths {
    std::filesystem::path record;  // its folder is made when missing (mode 0755)
    std::filesystem::path socket;  // of the helper
  };

  // `log` takes a finished sentence about a damaged record, once for each state of it; it may be empty.
  ChildHelperRegistration(MainQueue& main, DetachedProgram helper, Paths paths,
                          std::function<void(std::string_view)> log, Duration stopLimit = kHelperStopLimit);
  ~ChildHelperRegistration() override;

  // notFound without the helper's binary, notRegistered without the record, otherwise enabled.
  [[nodiscard]] HelperStatus status() const override;
  // Starts the helper, or finds it running, and writes the record.
  Status registerDaemon() override;
  // Asks the helper to end, forces it after the limit, and removes the record when it has gone. Calls that come
  // while one is under way end with it. Fails with ETIMEDOUT when the helper does not end.
  void unregisterDaemon(Completion<Status> done) override;
  // 0 when the helper runs afterwards, kDaemonNotLoaded when none is registered, errno when it did not start.
  std::optional<std::int32_t> kickstart() override;
  // 0 when the helper runs, otherwise kDaemonNotLoaded.
  [[nodiscard]] std::optional<std::int32_t> printExitCode() const override;
  // Nothing to open: the user's own daemon needs nobody's approval.
  void openSettings() override {}

 private:
  struct Process {
    pid_t pid = 0;
    std::string stamp;
    [[nodiscard]] bool runs() const;
  };
  struct Record {
    std::optional<Process> process;  // absent when there is no record, or a damaged one
    bool damaged = false;
  };
  [[nodiscard]] Record readRecord() const;
  [[nodiscard]] std::optional<Process> running() const;
  Status runAndRecord();
  Status start();
  Status writeRecord(const Process& process);
  void tellDamaged(const std::string& bytes) const;
  void checkStopped();
  void finishUnregister();

  MainQueue& main_;
  DetachedProgram helper_;
  Paths paths_;
  std::function<void(std::string_view)> log_;
  Duration stopLimit_;
  mutable std::optional<std::string> toldDamage_;
  std::optional<Process> ending_;
  std::vector<Completion<Status>> waiting_;
  int checksLeft_ = 0;
  Lease nextCheck_;
};

}  // namespace corvane
