// Shows a background pass that the helper runs on its own. It starts nothing at the helper.
#pragma once

#include "core/records/notifications.h"
#include "workflow/room_context.h"

namespace corvane {

class HelperPassMirror {
 public:
  explicit HelperPassMirror(const RoomContext& context) : c_(context) {}

  // Does nothing while a run of this process is shown.
  void started(const CorvaneHelperPassStarted& pass);
  void progressed(const CorvaneHelperPassProgress& pass);
  // Ends what is shown of a background pass, whoever started it.
  void ended();
  void completed(const CorvaneHelperPassCompleted& pass);

 private:
  RoomContext c_;
};

}  // namespace corvane
