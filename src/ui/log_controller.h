// Ties the log page to its model.
#pragma once

#include "diagnostics/log_view_model.h"
#include "ui/log_bridge.h"
#include "workflow/workflow_services.h"

namespace corvane::ui {

// Main thread.
class LogController {
 public:
  LogController(LogViewModel& model, const WorkflowServices& services);

  [[nodiscard]] LogBridge& bridge() { return bridge_; }

 private:
  void show();

  LogViewModel& model_;
  WorkflowServices services_;
  LogBridge bridge_;
  Lease changes_;
};

}  // namespace corvane::ui
