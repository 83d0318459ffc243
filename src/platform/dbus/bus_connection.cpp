#include "platform/dbus/bus_connection.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/dbus/bus_address.h"

namespace corvane {

namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

// By these the bus and its services say that they have no such thing. Which of them a missing property brings
// depends on the library that the service was written with.
constexpr std::array<std::string_view, 7> kNoSuchThing{
    "org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.NameHasNoOwner",
    "org.freedesktop.DBus.Error.UnknownObject",  "org.freedesktop.DBus.Error.UnknownInterface",
    "org.freedesktop.DBus.Error.UnknownMethod",  "org.freedesktop.DBus.Error.UnknownProperty",
    "org.freedesktop.DBus.Error.InvalidArgs",
};

}  // namespace

Heard<std::string> BusConnection::ownerOf(const std::string& name, const BusDeadline& deadline) {
  return ask<std::string>({.owner = kBus, .path = kBusPath, .interface = kBus}, "GetNameOwner", deadline, name);
}

Heard<void> BusConnection::connect(const BusDeadline& deadline) {
  if (connection_ && isLost()) connection_.reset();
  if (connection_) return {};
  if (!addresses_) return std::unexpected(Silence::nobody);
  const auto address = answeringBus(*addresses_, deadline);
  if (!address) return std::unexpected(address.error());
  connection_ = sdbus::createSessionBusConnectionWithAddress(*address);
  return {};
}

bool BusConnection::isLost() const {
  pollfd socket{.fd = connection_->getEventLoopPollData().fd, .events = 0, .revents = 0};
  return ::poll(&socket, 1, 0) != 0;  // nothing but a hang-up or an error is reported
}

std::unexpected<Error> BusConnection::silent(Silence why) {
  if (why == Silence::nobody) return failure(BusError::domain, BusError::noBus, "There is no such bus");
  return failure(BusError::domain, BusError::noAnswer, "There was no answer in time");
}

Silence BusConnection::after(const sdbus::Error& error) {
  if (std::ranges::find(kNoSuchThing, error.getName()) != kNoSuchThing.end()) return Silence::nobody;
  // A fresh connection leaves behind whatever was wrong with this one, and the answer that may still come late.
  connection_.reset();
  return Silence::unreadable;
}

}  // namespace corvane
