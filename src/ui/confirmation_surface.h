// Ties the confirmation's window to its controller: a question opens it, an answer takes it away.
#pragma once

#include "base/lease.h"
#include "presentation/install_confirmation_controller.h"
#include "ui/confirmation_bridge.h"
#include "ui/floating_panel.h"
#include "workflow/workflow_services.h"

namespace corvane::ui {

// Main thread. The controller outlives it. A question that stands already is shown at once.
class ConfirmationSurface {
 public:
  ConfirmationSurface(InstallConfirmationController& controller, const WorkflowServices& services);

  [[nodiscard]] FloatingPanel& panel() { return panel_; }

 private:
  void refresh();

  InstallConfirmationController& controller_;
  WorkflowServices services_;
  ConfirmationBridge bridge_;
  FloatingPanel panel_;
  std::int64_t shown_ = 0;  // the question that the panel was last raised for
  Lease changes_;
};

}  // namespace corvane::ui
