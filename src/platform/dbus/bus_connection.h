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
    try {
      if (const auto open = connect(deadline); !open) return std::unexpected(open.error());
      // To the library a limit of zero means its own, which is 25 s.
      const auto limit = deadline.nextCall();
      if (limit.count() == 0) return std::unexpected(Silence::unreadable);
      const auto proxy = sdbus::createProxy(*connection_, object.owner, object.path);
      auto call = proxy->createMethodCall(object.interface, method);
      ((call << arguments), ...);
      auto reply = proxy->callMethod(call, static_cast<std::uint64_t>(limit.count()));
      Value value{};
      reply >> value;
      return value;
    } catch (const sdbus::Error& error) {
      return std::unexpected(after(error));
    } catch (const std::exception&) {
      return std::unexpected(Silence::unreadable);
    }
  }

 private:
  [[nodiscard]] Heard<void> connect(const BusDeadline& deadline);
  [[nodiscard]] bool isLost() const;
  [[nodiscard]] Silence after(const sdbus::Error& error);

  std::optional<std::string> addresses_;
  std::unique_ptr<sdbus::IConnection> connection_;
};

}  // namespace corvane
