#include "platform/dbus/bus_error.h"

#include <sdbus-c++/sdbus-c++.h>

#include <array>
#include <string_view>

namespace corvane {

namespace {

struct Meaning {
  std::string_view name;
  int code;
};

constexpr std::array<Meaning, 10> kMeanings{{
    {"org.freedesktop.DBus.Error.ServiceUnknown", BusError::noService},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", BusError::noService},
    // In the name of a service that went while it was asked, and of a bus that did; then the library's own.
    {"org.freedesktop.DBus.Error.NoReply", BusError::noAnswer},
    {"org.freedesktop.DBus.Error.Timeout", BusError::noAnswer},
    {"org.freedesktop.DBus.Error.Disconnected", BusError::noBus},
    {"org.freedesktop.DBus.Error.AccessDenied", BusError::forbidden},
    {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", BusError::forbidden},
    {"org.freedesktop.DBus.Error.FileNotFound", BusError::unknown},
    {"org.freedesktop.DBus.Error.UnknownObject", BusError::unknown},
    {"org.freedesktop.systemd1.NoSuchUnit", BusError::unknown},
}};
constexpr std::string_view kCouldNotStart = "org.freedesktop.DBus.Error.Spawn.";

int codeOf(std::string_view name) {
  if (name.starts_with(kCouldNotStart)) return BusError::noService;
  for (const auto& meaning : kMeanings)
    if (meaning.name == name) return meaning.code;
  return BusError::refused;
}

}  // namespace

Error busErrorOf(const sdbus::Error& error) {
  const auto& name = error.getName();
  return {
      .domain = BusError::domain, .code = codeOf(name), .text = error.getMessage().empty() ? name : error.getMessage()};
}

}  // namespace corvane
