// Whether the helper and its tool are there, as the rest of the workflow sees it, and what is done about a helper that
// does not answer: it is given time, then started, and as the last resort registered anew.
#pragma once

#include "base/lease.h"
#include "base/lifeline.h"
#include "base/uuid.h"
#include "workflow/room_context.h"

namespace corvane {

class HelperLifecycle {
 public:
  // How long a registered helper may take after login until it counts as broken, and how often it is looked for.
  static constexpr Duration kLoginGrace = 20s;
  static constexpr Duration kGracePoll = 2s;
  static constexpr Duration kAfterKickstart = 3s;
  // An automatic reset is not repeated within it, by this launch or another one.
  static constexpr Duration kResetInterval = 3600s;

  HelperLifecycle(const RoomContext& context, HelperFields& fields);

  // What the store knows: first-run setup and management.
  void load();
  // Cheap: one look at the heartbeat and one at the script. Starts the first discovery once the tool has come.
  void refreshHelperState(bool runAutoReset);
  void markFirstRunSetupIfComplete();
  // Whatever is there: the user is done with the wizard.
  void completeFirstRunSetup();

  // Resets a helper that is registered but not there, or is another one than was registered: at most once a launch
  // and once an hour, never during a run nor in the time that a late one is given. Cheap when nothing is wrong.
  void evaluateAutoReset();
  // Once at the start: gives a registered helper that does not run its time, then starts it, then resets it.
  void reconcileHelperAfterLogin();

  // The first registration. A failure stands in the error line.
  void registerHelper();
  // Takes the helper's registration away, makes it anew and waits for its first heartbeat. One at a time: a
  // second call while one is out changes nothing, and says so when a person asked. How it ended stands in the
  // status line or the error line. An automatic one that failed gives its place in the hour back.
  void resetHelper(bool isAutomatic);

 private:
  // What may be wrong with a registered helper.
  struct Trouble {
    HelperStatus status = HelperStatus::unknown;
    bool operationallyBroken = false;
    bool binaryChanged = false;
  };

  [[nodiscard]] Trouble trouble() const;
  void logSkippedReset(Duration sinceLast, const Trouble& found);
  void discoverOnceDeployed();
  void lookForLateHelper();
  void kickstart();
  void lookAfterKickstart();
  void resetEnded(Uuid token, bool isAutomatic, const Result<HelperResetResult>& answer);

  RoomContext c_;
  HelperFields& fields_;
  SteadyTime graceEnds_{};  // beside the deadline, so that a clock that is set back does not prolong it
  Lease postLoginHelperReconcile_;
  Lifeline lifeline_;
};

}  // namespace corvane
