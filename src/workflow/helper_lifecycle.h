// Whether the helper and its tool are there, as the rest of the workflow sees it, and how a person registers or
// resets the helper. When a reset comes by itself is decided elsewhere.
#pragma once

#include "base/lifeline.h"
#include "base/uuid.h"
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

  // The first registration. A failure stands in the error line.
  void registerHelper();
  // Takes the helper's registration away, makes it anew and waits for its first heartbeat. One at a time: a
  // second call while one is out changes nothing, and says so when a person asked. How it ended stands in the
  // status line or the error line. An automatic one that failed gives its place in the hour back.
  void resetHelper(bool isAutomatic);

 private:
  void discoverOnceDeployed();
  void resetEnded(Uuid token, bool isAutomatic, const Result<HelperResetResult>& answer);

  RoomContext c_;
  HelperFields& fields_;
  Lifeline lifeline_;
};

}  // namespace corvane
