// What a Linux desktop says of not being disturbed, asked of its services over D-Bus. Starts no service by asking.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/dbus/bus_question.h"
#include "platform/focus_state.h"

namespace corvane {

// Absent: there is no such bus.
struct BusAddresses {
  std::optional<std::string> session;
  std::optional<std::string> system;

  // DBUS_SESSION_BUS_ADDRESS and DBUS_SYSTEM_BUS_ADDRESS; without the latter, where Linux systems keep the system bus.
  [[nodiscard]] static BusAddresses ofEnvironment();
};

// Connects at the first question. Each answer blocks for `patience.answer` at most and throws nothing; a bus that was
// lost is tried again at the next question. Main thread.
class SessionFocusState final : public FocusState {
 public:
  explicit SessionFocusState(BusAddresses addresses = BusAddresses::ofEnvironment(), BusPatience patience = {});
  ~SessionFocusState() override;

  // What the notification service says of itself, else the setting of the desktop that it belongs to. Absent without a
  // bus or a service, and when the service neither says so nor is one whose setting is known.
  [[nodiscard]] std::optional<bool> doNotDisturb() const override;

  // Who holds off idleness at the login manager, of this user's processes, by the name of the executable (by the name
  // given when the process is gone), and at the session manager, by the application's identifier. Sorted, each once.
  // A bus or a manager that is not there holds nothing, so that a machine without a desktop is not called unreadable;
  // one that is there and does not answer makes the whole answer absent.
  [[nodiscard]] std::optional<std::vector<std::string>> displaySleepHolders() const override;

 private:
  class Desktop;
  std::unique_ptr<Desktop> desktop_;
};

}  // namespace corvane
