// Ties the prompt's windows to its controller: a change makes a new page, a click is handed on.
#pragma once

#include "base/lease.h"
#include "base/lifeline.h"
#include "presentation/deferral_prompt_controller.h"
#include "ui/floating_panel.h"
#include "ui/prompt_bridge.h"
#include "workflow/prompt_presenter.h"

namespace corvane::ui {

// Main thread. The controller outlives it.
class PromptSurface final : public PromptPresenter {
 public:
  PromptSurface(DeferralPromptController& controller, const WorkflowServices& services);

  [[nodiscard]] PromptBridge& bridge() { return bridge_; }
  [[nodiscard]] FloatingPanel& panel() { return panel_; }

  void showStandaloneWindow() override;
  void hideStandaloneWindow() override { panel_.hide(); }

 private:
  [[nodiscard]] PromptActions actions();
  void refresh();

  DeferralPromptController& controller_;
  WorkflowServices services_;
  PromptBridge bridge_;
  FloatingPanel panel_;
  Lease changes_;
  Lifeline lifeline_;
};

}  // namespace corvane::ui
