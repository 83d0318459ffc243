// Finds out whether a bus stands behind an address before the library connects: its handshake cannot be given a
// limit, and a daemon that takes connections but hangs would hold the caller for a minute and a half.
#pragma once

#include <string>
#include <string_view>

#include "platform/dbus/bus_question.h"

namespace corvane {

// The first entry of a list of bus addresses ("unix:path=/run/bus;unix:abstract=x") behind which somebody listens, if
// the daemon there answers within one call's patience. Nobody: no entry leads anywhere, which includes "disabled:" and
// transports other than Unix-domain sockets. Blocks for one call at most.
[[nodiscard]] Heard<std::string> answeringBus(std::string_view addresses, const BusDeadline& deadline);

}  // namespace corvane
