// Calls over a link with values for arguments and answers. Only for the adapters of this folder: it brings the headers
// of sdbus-c++ along, which theirs must not.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <exception>
#include <functional>
#include <string>
#include <tuple>
#include <utility>

#include "platform/dbus/bus_link.h"

namespace corvane {

inline constexpr const char* kBusItself = "org.freedesktop.DBus";
inline constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

// A question to the bus daemon.
[[nodiscard]] inline BusCall toBus(const char* method) {
  return {.object = {.owner = kBusItself, .path = "/org/freedesktop/DBus", .interface = kBusItself}, .method = method};
}

template <class... Values>
struct BusAnswer {
  std::string sender;  // the unique name of who answered
  std::tuple<Values...> values;
};

// Calls with `arguments`, which are kept until the bus is open, and runs `done` with the values of the answer as
// Result<BusAnswer<Values...>>.
template <class... Values, class Done, class... Arguments>
void ask(BusLink& link, BusCall what, Duration limit, Done done, Arguments... arguments) {
  link.call(
      std::move(what), limit,
      [kept = std::make_tuple(std::move(arguments)...)](sdbus::Message& message) {
        std::apply([&](const auto&... values) { ((message << values), ...); }, kept);
      },
      [done = std::move(done)](Result<sdbus::Message*> answer) mutable {
        using Answer = Result<BusAnswer<Values...>>;
        if (!answer) return done(Answer(std::unexpected(std::move(answer.error()))));
        Answer read{BusAnswer<Values...>{}};
        try {
          read->sender = (*answer)->getSender();
          std::apply([&](auto&... values) { ((**answer >> values), ...); }, read->values);
        } catch (const std::exception& problem) {
          read = failure(BusError::domain, BusError::unreadable, problem.what());
        }
        done(std::move(read));
      });
}

}  // namespace corvane
