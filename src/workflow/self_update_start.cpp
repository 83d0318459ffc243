#include "workflow/self_update_start.h"

#include <utility>

#include "base/localized.h"
#include "core/preferences/display_title.h"

namespace corvane {

void SelfUpdateStart::setAvailable(std::optional<SelfUpdateAvailability> available) {
  fields_.selfUpdateAvailable = std::move(available);
  c_.crossings.fieldsChanged();
}

// The date goes first: the run may end this process, and the launch that follows looks for it.
void SelfUpdateStart::startSelfUpdate(const Label& label) {
  if (c_.gate.busy()) {
    c_.log.info("Self-update will start when the current operation finishes.");
    return queue(label);
  }
  auto& store = c_.services.preferences;
  c_.messages.status(AppDisplayTitle(store.loadConfiguration()).userFacing(localized("Updating Corvane…")));
  store.writePreference("SelfUpdateStartedAt", c_.services.clock.now());
  c_.crossings.patchSingle(label);
}

void SelfUpdateStart::queue(const Label& label) {
  if (fields_.selfUpdateQueued) return;
  setQueued(true);
  c_.gate.whenIdle(lifeline_.guard([this, label] {
    setQueued(false);
    startSelfUpdate(label);
  }));
}

void SelfUpdateStart::setQueued(bool queued) {
  fields_.selfUpdateQueued = queued;
  c_.crossings.fieldsChanged();
}

}  // namespace corvane
