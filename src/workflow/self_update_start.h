// What is known of an update of this program itself, and how its install is started.
#pragma once

#include "base/lifeline.h"
#include "workflow/room_context.h"

namespace corvane {

class SelfUpdateStart {
 public:
  SelfUpdateStart(const RoomContext& context, SelfUpdateFields& fields) : c_(context), fields_(fields) {}

  void setAvailable(std::optional<SelfUpdateAvailability> available);
  // Waits for the operation under way; asked for several times meanwhile it starts once.
  void startSelfUpdate(const Label& label);

 private:
  void queue(const Label& label);
  void setQueued(bool queued);

  RoomContext c_;
  SelfUpdateFields& fields_;
  Lifeline lifeline_;
};

}  // namespace corvane
