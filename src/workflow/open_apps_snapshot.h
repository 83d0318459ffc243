// What is pending at one moment, and which of it is open.
#pragma once

#include <set>

#include "workflow/app_predicates.h"
#include "workflow/workflow_services.h"

namespace corvane {

struct OpenAppsSnapshot {
  Apps apps;
  std::set<Label> openLabels;
  bool canPatchClosedApps = false;        // some are closed, and settings and power let them be patched
  bool closedAppsWaitForACPower = false;  // some are closed, and the battery alone holds them up
  [[nodiscard]] std::set<Label> labels() const;
  [[nodiscard]] std::set<Label> closedLabels() const;
};

// The labels of `apps` whose application is open: one of its processes runs from its bundle, or the user runs one with
// its identifier. When the processes cannot be listed all count as open, and an error says so.
[[nodiscard]] std::set<Label> openLabels(const Apps& apps, const WorkflowServices& services, const Logger& log);

// Empty in a complete cycle; without failed checks, foreign teams and held labels.
[[nodiscard]] OpenAppsSnapshot openAppsSnapshot(const InventoryFields& inventory, const AppFacts& facts,
                                                const WorkflowServices& services, const Logger& log);

}  // namespace corvane
