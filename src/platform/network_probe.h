// Whether a network leads anywhere. What is done without one is not decided here.
#pragma once

#include <optional>

#include "base/task.h"

namespace corvane {

struct NetworkState {
  bool hasLink = false;
  std::optional<bool> captivePortal;  // absent when that could not be told
  friend bool operator==(const NetworkState&, const NetworkState&) = default;
};

// Main thread.
class NetworkProbe {
 public:
  virtual ~NetworkProbe() = default;

  // Looks anew. `done` runs once in a later turn, within seconds also where nothing answers.
  virtual void probe(Completion<NetworkState> done) = 0;
};

}  // namespace corvane
