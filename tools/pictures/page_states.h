// Dashboard pages of every state, made by the real page model over state written by hand. Times and words are
// the same on every machine.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/virtual_time.h"
#include "presentation/dashboard_builder.h"
#include "presentation/first_run_setup_page.h"

namespace corvane {

struct PageState {
  static constexpr Date kNow = VirtualMachine::kStart;

  std::string name;  // of the picture
  StatusFields fields;
  AppFacts facts;
  Apps listed;
  HelperStatus helperStatus = HelperStatus::enabled;
  std::optional<PendingWatchpoint> watchpoint;
  std::map<Label, ExpandedHistory> expanded;
  bool selfUpdateDismissed = false;
  DashboardCapabilities capabilities;
  std::string statusLine;
  std::string statusSymbol;
  double textScale = 1;
  int width = 920;
  int height = 680;
  bool dark = false;

  std::vector<Label> explained;      // whose row tells why
  std::optional<Date> step2Since{};  // of the wizard: since when its second step runs

  [[nodiscard]] DashboardPage page() const;
  [[nodiscard]] FirstRunSetupPage setupPage() const;
};

// A Mac in use: current, outdated, failed, held, foreign, store-managed, unanswered, missing and long names.
[[nodiscard]] PageState ordinaryState();

[[nodiscard]] AppInfo outdatedApp(std::string label, std::string name);

// All that is drawn into pictures, light and dark.
[[nodiscard]] std::vector<PageState> allPageStates();

}  // namespace corvane
