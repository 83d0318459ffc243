// The first-run wizard as values: three steps, each with its state, its words and its control, and the way out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/preferences/display_title.h"
#include "platform/helper_registration.h"
#include "platform/locale.h"
#include "presentation/dashboard_page.h"
#include "workflow/status_fields.h"

namespace corvane {

enum class StepState { pending, inProgress, complete };
[[nodiscard]] std::string_view stepStateName(StepState state);

struct SetupStep {
  std::string key;  // "helper", "installomator", "discovery"
  std::string number;
  std::string title;
  std::string state;       // the case's name
  std::string spokenText;  // the whole step, for those who hear it
  std::string description;
  PageButton control;
  friend bool operator==(const SetupStep&, const SetupStep&) = default;
};

struct FirstRunSetupPage {
  bool visible = false;
  std::string title;
  std::string subtitle;
  std::vector<SetupStep> steps;
  PageButton skip;
  PageButton done;
  friend bool operator==(const FirstRunSetupPage&, const FirstRunSetupPage&) = default;
};

template <>
struct PageFields<SetupStep> {
  static constexpr auto all = std::make_tuple(
      pageField("key", &SetupStep::key), pageField("number", &SetupStep::number), pageField("title", &SetupStep::title),
      pageField("state", &SetupStep::state), pageField("spokenText", &SetupStep::spokenText),
      pageField("description", &SetupStep::description), pageField("control", &SetupStep::control));
};
template <>
struct PageFields<FirstRunSetupPage> {
  static constexpr auto all = std::make_tuple(
      pageField("visible", &FirstRunSetupPage::visible), pageField("title", &FirstRunSetupPage::title),
      pageField("subtitle", &FirstRunSetupPage::subtitle), pageField("steps", &FirstRunSetupPage::steps),
      pageField("skip", &FirstRunSetupPage::skip), pageField("done", &FirstRunSetupPage::done));
};

struct FirstRunSetupInputs {
  const StatusFields& fields;
  const Locale& locale;
  Date now;
  AppDisplayTitle title;
  HelperStatus helperStatus = HelperStatus::unknown;
  std::optional<Date> step2InProgressSince;
  bool revealsLog = false;  // this program can show the log file
};

// The state of the second step, by which its start is noted.
[[nodiscard]] StepState installomatorStepState(const HelperFields& helper, HelperStatus status);

// Localised. Main thread.
[[nodiscard]] FirstRunSetupPage makeFirstRunSetupPage(const FirstRunSetupInputs& inputs);

}  // namespace corvane
