// Ties the dashboard to the model: a change of the model makes a new page, an action calls an operation.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/windows_module.h"
#include "base/lease.h"
#include "presentation/dashboard_builder.h"
#include "presentation/first_run_setup_controller.h"
#include "ui/dashboard_bridge.h"
#include "workflow/status_view_model.h"

namespace corvane::ui {

// Main thread. Holds the page's own state: which rows are expanded, and a dismissed banner.
class DashboardController {
 public:
  // Without `logs` the window has no page of them; `openSettings` may be absent too.
  DashboardController(StatusViewModel& model, const WorkflowServices& services, PromptBridge& prompt,
                      WindowActions host, LogBridge* logs = nullptr, std::function<void()> openSettings = {});

  [[nodiscard]] DashboardBridge& bridge() { return bridge_; }

  // Makes the page anew. Called by itself once a turn after the model changed.
  void refresh();

 private:
  [[nodiscard]] DashboardActions actions(std::function<void()> openSettings);
  void whenIdle(std::string_view name, const std::function<void()>& start);
  void updateApp(const std::string& label);
  void toggleHistory(const Label& label);
  void toggleWhy(const Label& label);
  void dismissSelfUpdate();
  [[nodiscard]] std::map<Label, ExpandedHistory> expandedHistories();
  [[nodiscard]] std::map<Label, Explanation> explanations() const;

  StatusViewModel& model_;
  WorkflowServices services_;
  WindowActions host_;
  DashboardBridge bridge_;
  LabelSet expandedReceiptLabels_;
  LabelSet explainedLabels_;
  FirstRunSetupController setup_;
  Lease setupChanges_;
  std::optional<SelfUpdateAvailability> dismissedSelfUpdate_;
  Lease changes_;
  Lease nextMinute_;
};

}  // namespace corvane::ui
