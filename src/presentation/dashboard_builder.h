// Makes the dashboard page from what is known. A pure function: the same inputs give the same page.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/preferences/display_title.h"
#include "core/records/history_records.h"
#include "platform/helper_registration.h"
#include "platform/locale.h"
#include "presentation/dashboard_page.h"
#include "workflow/app_facts.h"
#include "workflow/explanation.h"
#include "workflow/status_fields.h"

namespace corvane {

// What an expanded row shows; newest first.
struct ExpandedHistory {
  std::vector<PatchingReceipt> receipts;
  std::vector<DeferralEventRecord> events;
};

// How many receipts and events an expanded row shows at most.
inline constexpr std::size_t kExpandedHistoryLimit = 10;

// Which actions have something behind them in this program. One without is not offered.
struct DashboardCapabilities {
  bool updatesItself = false;
};

struct DashboardInputs {
  const StatusFields& fields;
  const AppFacts& facts;
  const Apps& listed;  // the applications of the chosen filter, in order
  const Locale& locale;
  Date now;
  AppDisplayTitle title;
  HelperStatus helperStatus = HelperStatus::unknown;
  std::string statusLine;
  std::string statusSymbol;
  std::optional<PendingWatchpoint> watchpoint;       // what is armed
  const std::map<Label, ExpandedHistory>& expanded;  // a label in it is expanded
  bool selfUpdateDismissed = false;
  DashboardCapabilities capabilities;
  std::map<Label, Explanation> explained{};  // a label in it tells why
};

// Localised. Main thread, since wordings come from the locale.
[[nodiscard]] DashboardPage makeDashboardPage(const DashboardInputs& inputs);

}  // namespace corvane
