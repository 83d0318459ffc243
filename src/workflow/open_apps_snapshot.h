// What is pending at one moment, and which of it is open.
#pragma once

#include "workflow/app_predicates.h"
#include "workflow/workflow_services.h"

namespace corvane {

struct OpenAppsSnapshot {
  Labels pending;  // in the order of the inventory
  LabelSet openLabels;
  LabelSet closedLabels;
  bool canPatchClosedApps = false;        // some are closed, and settings and power let them be patched
  bool closedAppsWaitForACPower = false;  // some are closed, and the battery alone holds them up
  bool cycleComplete = false;
  [[nodiscard]] LabelSet labels() const { return {pending.begin(), pending.end()}; }
};

// The labels of `apps` whose application is open: one of its processes runs from its bundle, or the user runs one with
// its identifier. When the processes cannot be listed all count as open, and an error says so.
[[nodiscard]] LabelSet openLabels(const Apps& apps, const WorkflowServices& services, const Logger& log);

// Empty in a complete cycle; without failed checks, foreign teams and held labels.
[[nodiscard]] OpenAppsSnapshot openAppsSnapshot(const InventoryFields& inventory, const AppFacts& facts,
                                                const WorkflowServices& services, const Logger& log);

}  // namespace corvane
