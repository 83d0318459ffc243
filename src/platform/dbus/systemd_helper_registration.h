// The root helper as a service of the system, kept by the service manager.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/lease.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "platform/dbus/bus_name_watch.h"
#include "platform/helper_registration.h"

namespace corvane {

inline constexpr const char* kHelperUnit = "CorvaneRootHelper.service";

// What the service manager makes of a unit's file.
enum class UnitFile {
  absent,    // there is none, or none that it can read
  disabled,  // there, and nothing starts it
  enabled,   // started with the system
  masked,    // the administrator forbids it
};
// From the manager's word for it ("enabled-runtime"). A word that is not known counts as disabled.
[[nodiscard]] UnitFile unitFileOf(std::string_view word);

// Nobody: there is no bus, or no service manager on it; unreadable: there is one that does not answer. Blocks for
// `patience.answer` at most and starts no service.
[[nodiscard]] Heard<UnitFile> askUnitFile(const std::optional<std::string>& systemBus, const std::string& unit,
                                          const BusPatience& patience = {});

// Main thread. Registered is the helper whose unit is enabled. Answers come from memory, which the manager's signals
// keep current; only registerDaemon and kickstart wait for it, for one call and 600 ms at most. What the manager does
// not let this user do without asking an administrator is not done: the status is requiresApproval until the
// administrator did it.
class SystemdHelperRegistration : public HelperRegistration {
 public:
  struct Limits {
    BusPatience waits{.call = std::chrono::milliseconds(500), .answer = std::chrono::milliseconds(600)};
    Duration call = 5s;       // until the manager answers, while nobody waits
    Duration reload = 30s;    // reading all units anew; it answers nobody meanwhile
    Duration stop = 45s;      // until the helper has gone: 30 s of the unit's own, and forcing it
    Duration askAgain = 30s;  // a manager that did not answer
  };
  struct Settings {
    std::optional<std::string> systemBus;       // the address of `system`
    std::optional<UnitFile> known;              // what the unit's file was found to be; absent: not known yet
    std::function<void(std::string_view)> log;  // takes finished sentences; may be empty
    std::string unit = kHelperUnit;
    Limits limits = {};
  };

  SystemdHelperRegistration(BusLink& system, MainQueue& main, Settings settings);
  ~SystemdHelperRegistration() override;

  // unknown while the manager does not answer.
  [[nodiscard]] HelperStatus status() const override;
  // Enables the unit; the manager then reads it anew and starts the helper, while nobody waits. Succeeds, with the
  // status at requiresApproval, where an administrator has to allow it. Domain "CRVHelperRegistration", codes: ENOENT
  // without a unit file, ETIMEDOUT, ENOTCONN without a manager, EBUSY while it is being unregistered, EIO with the
  // manager's words.
  Status registerDaemon() override;
  // Disables the unit, stops the helper and waits until it has gone. Calls that come while one is under way end with
  // it. Fails as registerDaemon does, and with EACCES where an administrator has to allow it.
  void unregisterDaemon(Completion<Status> done) override;
  // 0 when the manager took the order; EACCES where an administrator has to allow it, EIO when it refused otherwise.
  std::optional<std::int32_t> kickstart() override;
  [[nodiscard]] std::optional<std::int32_t> printExitCode() const override;
  // There is no window for it: tells the log what the administrator enters.
  void openSettings() override;

 private:
  [[nodiscard]] bool runs() const;
  template <class Value, class... Arguments>
  Result<Value> wait(const char* method, const Arguments&... arguments);
  template <class... Values, class Done, class... Arguments>
  void call(BusCall what, Duration limit, Done done, Arguments... arguments);

  void managerChanged();
  void reloads(bool begins);
  void look();
  void lookLater(Duration wait);
  void sawActiveState(std::string state);
  void tellFailure(std::string what);
  void tell(const std::string& line) const;
  void enabledNow(bool enabled);

  void reload(Task then);
  void start();
  void stop();
  void jobRemoved(const std::string& job, const std::string& result);
  void stopJobEnded(const std::string& result);
  void finishUnregister(Status status);

  BusLink& system_;
  MainQueue& main_;
  Settings settings_;
  std::string unitPath_;
  std::optional<UnitFile> file_;
  std::optional<std::string> activeState_;
  bool forbidden_ = false;
  bool reloading_ = false;
  std::uint64_t looks_ = 0;   // what an earlier one brings is not believed any more
  std::uint64_t orders_ = 0;  // a start that an unregistering has overtaken is not given
  std::vector<Completion<Status>> unregistering_;
  std::optional<std::string> stopJob_;
  std::pair<std::string, std::string> lastJob_;  // that was removed, and its result
  Lease stopLimit_;
  Lease lookLater_;
  std::vector<Lease> signals_;
  BusNameWatch manager_;
  Lifeline lifeline_;
};

}  // namespace corvane
