// The parts of a program that has no prompt, no scheduler and no signals: each is silent, and nothing that
// the workflow promises depends on it.
#pragma once

#include "core/records/usage_signals.h"
#include "workflow/helper_reset_decision.h"
#include "workflow/pending_update_side_effects.h"
#include "workflow/prompt_presenter.h"
#include "workflow/self_update_display.h"
#include "workflow/update_all_entry.h"

namespace corvane {

struct NeutralParts {
  struct SideEffects final : PendingUpdateSideEffects {
    void runPendingUpdateSideEffects() override {}
    void deliverDeferral(bool, bool) override {}
  } sideEffects;
  struct Prompts final : PromptPresenter {
    void showStandaloneWindow() override {}
    void hideStandaloneWindow() override {}
    void cancelReminders() override {}
  } prompts;
  struct Signals final : UsageSignals {
    void send(const UsageSignal&) override {}
  } signals;
  struct Display final : SelfUpdateDisplay {
    void lookUp(const Apps&) override {}
  } selfUpdateDisplay;
  struct Reset final : HelperResetDecision {
    void evaluateAutoReset() override {}
    void reconcileHelperAfterLogin() override {}
  } helperReset;
  struct UpdateAll final : UpdateAllEntry {
    void updateAll(DeferralPromptHost) override {}
  } updateAll;
};

}  // namespace corvane
