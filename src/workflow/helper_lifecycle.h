// Whether the helper and its tool are there, as the rest of the workflow sees it. It resets nothing itself.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class HelperLifecycle {
 public:
  HelperLifecycle(const RoomContext& context, HelperFields& fields);

  // What the store knows: first-run setup and management.
  void load();
  // Cheap: one look at the heartbeat and one at the script. Starts the first discovery once the tool has come.
  void refreshHelperState(bool runAutoReset);
  void markFirstRunSetupIfComplete();

 private:
  void discoverOnceDeployed();

  RoomContext c_;
  HelperFields& fields_;
};

}  // namespace corvane
