// Whether a helper that does not answer is to be reset without being asked.
#pragma once

namespace corvane {

// Main thread.
class HelperResetDecision {
 public:
  virtual ~HelperResetDecision() = default;
  // Looks at the state of the helper and resets it where every guard allows; cheap when there is nothing to do.
  virtual void evaluateAutoReset() = 0;
  // Once at the start: a registered helper may be late after login, and is given time before it counts as broken.
  virtual void reconcileHelperAfterLogin() = 0;
};

}  // namespace corvane
