// Whether work that needs the internet may begin. Looks through the port alone.
#pragma once

#include <utility>

#include "platform/network_probe.h"

namespace corvane {

struct NetworkReadinessChecker {
  // False for no link and for a captive portal. Where it could not be told whether there is one, the link's own word
  // counts: a fleet whose firewall hides the page that tells must still be patched.
  [[nodiscard]] static constexpr bool isInternetAvailable(const NetworkState& state) {
    return state.hasLink && !state.captivePortal.value_or(false);
  }

  // Main thread; looks anew. `done` runs once in a later turn.
  static void isInternetAvailable(NetworkProbe& probe, Completion<bool> done) {
    probe.probe([done = std::move(done)](const NetworkState& state) mutable { done(isInternetAvailable(state)); });
  }
};

}  // namespace corvane
