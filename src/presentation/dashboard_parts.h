// The parts of the dashboard, each a pure function of the same inputs. The page puts them together.
#pragma once

#include "presentation/dashboard_builder.h"
#include "presentation/page_texts.h"

namespace corvane {

// A pass or a run is out.
// A run of this process counts until it is answered, also while no flag shows it.
[[nodiscard]] inline bool isBusy(const StatusFields& fields) {
  return fields.gate.isPatching || fields.gate.isLoading || fields.patch.progress.has_value();
}

[[nodiscard]] std::vector<StatusCard> makeStatusCards(const StatusFields& fields, const PageTexts& texts);
[[nodiscard]] std::vector<TimestampPill> makeTimestampPills(const DashboardInputs& inputs, const PageTexts& texts);
[[nodiscard]] PageMessage makeNextStep(const DashboardInputs& inputs);
[[nodiscard]] std::vector<FilterSegment> makeFilterSegments(FilterMode selected, const PageTexts& texts);
[[nodiscard]] EmptyState makeEmptyState(const DashboardInputs& inputs, const PageTexts& texts);
[[nodiscard]] HelperSetupBanner makeHelperSetupBanner(const DashboardInputs& inputs, const PageTexts& texts);
[[nodiscard]] SelfUpdateBanner makeSelfUpdateBanner(const DashboardInputs& inputs, const PageTexts& texts);
[[nodiscard]] AppStatusRow makeAppStatusRow(const AppInfo& app, const DashboardInputs& inputs, const PageTexts& texts);

// The two histories of an expanded row; both lists newest first.
void fillHistory(AppStatusRow& row, const ExpandedHistory& history, const DashboardInputs& inputs,
                 const PageTexts& texts);

// The fold-out that tells why.
void fillWhy(AppStatusRow& row, const Explanation& explanation, const PageTexts& texts);

}  // namespace corvane
