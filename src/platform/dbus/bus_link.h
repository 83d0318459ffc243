// One bus on the main loop: calls, signals both ways. Nothing here waits; opening, whose handshake the library would
// wait for, is done by a job off the main thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/lease.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "base/work_queue.h"
#include "platform/dbus/bus_error.h"
#include "platform/dbus/bus_question.h"

struct uv_loop_s;

namespace sdbus {
class Message;
}

namespace corvane {

// How the connection comes and comes back.
struct BusHabits {
  std::chrono::milliseconds greeting{5000};  // how long the bus may take to say hello, off the main thread
  Duration firstRetry = 1s;                  // doubled with each attempt that fails
  Duration lastRetry = 60s;
};

// Main thread. Connects as soon as something is asked or awaited, and again after the bus was lost. When this dies,
// open calls are given up. The loop, the main queue and the work queue outlive it. The adapters of this folder speak
// through bus_call.h, which brings the library's types.
class BusLink {
 public:
  using Write = std::move_only_function<void(sdbus::Message&)>;           // may throw what the library throws
  using Answer = std::move_only_function<void(Result<sdbus::Message*>)>;  // the message is gone afterwards
  using Heard = std::function<void(sdbus::Message&)>;

  // `addresses` as the environment gives them; absent: there is no such bus, and every call fails.
  BusLink(uv_loop_s* loop, MainQueue& main, WorkQueue& work, std::optional<std::string> addresses,
          BusHabits habits = {});
  ~BusLink();
  BusLink(const BusLink&) = delete;
  BusLink& operator=(const BusLink&) = delete;

  // Calls a method. `answered` runs once in a later turn, after `limit` at the latest, the opening included. To a
  // well-known name it starts the service; to a unique one it does not.
  void call(BusCall what, Duration limit, Write write, Answer answered);

  // Sends a signal, from `what.path`; dropped while there is no connection.
  void emit(const BusCall& what, Write write);

  // Hears each signal that fits the rule, in a later turn; one whose reading throws is passed over. All subscriptions
  // are made before the first turn after the first of them; a later one is heard from the next connection on.
  [[nodiscard]] Lease subscribe(std::string rule, Heard heard);

  // Hears in a later turn that the connection stands (true), and that it was lost or could not be made (false). Hears
  // at first what is the case already, if that is known.
  [[nodiscard]] Lease watch(std::function<void(bool connected)> changed);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
