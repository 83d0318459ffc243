// One bus, asked one question at a time on the caller's thread. Only for the adapters of this folder: it brings the
// headers of sdbus-c++ along, which theirs must not.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/dbus/bus_error.h"
#include "platform/dbus/bus_question.h"

namespace corvane {

// Connects at the first question and again after the bus was lost. Nothing is thrown and no thread is started.
class BusConnection {
 public:
  explicit BusConnection(std::optional<std::string> addresses) : addresses_(std::move(addresses)) {}

  // Who owns a well-known name now. Never starts a service.
  [[nodiscard]] Heard<std::string> ownerOf(const std::string& name, const BusDeadline& deadline);

  // Calls `method` and reads the first value of the answer, which must be a `Value`.
  template <typename Value, typename... Arguments>
  [[nodiscard]] Heard<Value> ask(const BusObject& object, const std::string& method, const BusDeadline& deadline,
                                 const Arguments&... arguments) {
    auto silence = Silence::unreadable;
    auto value = speak<Value>(object, method, deadline, silence, arguments...);
    if (!value) return std::unexpected(silence);
    return std::move(*value);
  }

  // The same for who acts on the reason of a failure: a BusError. `noAnswer` leaves open what came of the call.
  template <typename Value, typename... Arguments>
  [[nodiscard]] Result<Value> demand(const BusObject& object, const std::string& method, const BusDeadline& deadline,
                                     const Arguments&... arguments) {
    auto silence = Silence::unreadable;
    return speak<Value>(object, method, deadline, silence, arguments...);
  }

 private:
  template <typename Value, typename... Arguments>
  Result<Value> speak(const BusObject& object, const std::string& method, const BusDeadline& deadline, Silence& silence,
                      const Arguments&... arguments) {
    try {
      if (const auto open = connect(deadline); !open) {
        silence = open.error();
        return silent(silence);
      }
      // To the library a limit of zero means its own, which is 25 s.
      const auto limit = deadline.nextCall();
      if (limit.count() == 0) return silent(silence);
      const auto proxy = sdbus::createProxy(*connection_, object.owner, object.path);
      auto call = proxy->createMethodCall(object.interface, method);
      ((call << arguments), ...);
      auto reply = proxy->callMethod(call, static_cast<std::uint64_t>(limit.count()));
      Value value{};
      reply >> value;
      return value;
    } catch (const sdbus::Error& error) {
      silence = after(error);
      return std::unexpected(busErrorOf(error));
    } catch (const std::exception& problem) {
      return failure(BusError::domain, BusError::unreadable, problem.what());
    }
  }

  [[nodiscard]] Heard<void> connect(const BusDeadline& deadline);
  [[nodiscard]] bool isLost() const;
  [[nodiscard]] static std::unexpected<Error> silent(Silence why);
  [[nodiscard]] Silence after(const sdbus::Error& error);

  std::optional<std::string> addresses_;
  std::unique_ptr<sdbus::IConnection> connection_;
};

}  // namespace corvane
