// The deferral prompt as values, with the confirmation that can stand in its place.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/records/enumerations.h"
#include "platform/locale.h"
#include "presentation/dashboard_page.h"
#include "presentation/page_texts.h"
#include "workflow/deferral_prompt_app.h"
#include "workflow/status_fields.h"

namespace corvane {

// The list shows as many rows before it scrolls.
inline constexpr std::size_t kPromptRowsInView = 4;

struct PromptRow {
  std::string key;  // the label
  std::string name;
  std::string monogram;
  std::string iconBundle;  // as in the dashboard's rows
  std::string versions;
  std::string behavior;
  std::string spokenText;
  friend bool operator==(const PromptRow&, const PromptRow&) = default;
};

struct ReminderOption {
  std::int64_t minutes = 0;
  std::string text;
  friend bool operator==(const ReminderOption&, const ReminderOption&) = default;
};

// How long the confirmation waits before it says yes by itself.
inline constexpr std::int64_t kConfirmationSeconds = 15;

// "Install updates?", in the prompt's place or in a panel of its own.
struct ConfirmationPage {
  bool visible = false;
  std::string symbol;
  std::string title;
  std::string text;
  std::string countdown;
  PageButton no;
  PageButton yes;
  friend bool operator==(const ConfirmationPage&, const ConfirmationPage&) = default;
};

struct DeferralPromptPage {
  bool visible = false;
  std::string host;  // the surface that shows it: "dashboard", "settings", "standalone"
  bool mayClose = true;
  std::string symbol;
  ColorRole symbolColor = ColorRole::accent;
  std::string title;
  std::string subtitle;
  std::string explanation;  // at hard: which limit was reached
  std::string pickerLabel;  // empty: no picker
  std::vector<ReminderOption> options;
  std::int64_t selectedOption = -1;  // its place; -1 for none
  std::string reminderTime;          // "You will be asked again at 3:40 PM."
  std::string autoInstall;           // "Auto-installs by Nov 24, 2026, 5:00 PM"
  std::string remaining;             // what is left of the limits
  std::string countdown;
  ColorRole countdownColor = ColorRole::secondary;
  PageButton defer;
  PageButton install;
  bool deferIsPrimary = false;
  std::vector<PromptRow> rows;
  ConfirmationPage confirmation;
  friend bool operator==(const DeferralPromptPage&, const DeferralPromptPage&) = default;
};

struct DeferralPromptInputs {
  const DeferralFields& fields;
  const std::vector<DeferralPromptApp>& apps;
  const Apps& inventory;  // for the icons
  std::vector<std::int64_t> options;
  std::optional<std::string> explanation;
  std::optional<std::string> remaining;
  bool deferButtonIsPrimary = false;
  bool hardMayClose = false;
  bool isInstalling = false;  // an install was asked for, and its updates are looked at once more or wait for that
};

// All that does not change by itself. Linear in the applications.
[[nodiscard]] DeferralPromptPage makeDeferralPromptPage(const DeferralPromptInputs& inputs, Date now,
                                                        const Locale& locale, const PageTexts& texts);

// What changes as time passes: the countdown's line and the clock time that the choice means.
struct PromptMoment {
  DeferralEscalation escalation = DeferralEscalation::normal;
  DeferralAction timeoutAction = DeferralAction::defer;
  std::int64_t secondsLeft = 0;
  std::int64_t selectedMinutes = 0;
  bool isInstalling = false;  // nothing is counted down any more
};
void tellTime(DeferralPromptPage& page, const PromptMoment& moment, Date now, const Locale& locale,
              const PageTexts& texts);

[[nodiscard]] ConfirmationPage makeConfirmationPage(std::int64_t secondsLeft, const PageTexts& texts);
// Once the answer was given: nothing can be pressed while the updates are looked at once more.
[[nodiscard]] ConfirmationPage makeAcceptedPage(const PageTexts& texts);

template <>
struct PageFields<PromptRow> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &PromptRow::key), pageField("name", &PromptRow::name),
                      pageField("monogram", &PromptRow::monogram), pageField("iconBundle", &PromptRow::iconBundle),
                      pageField("versions", &PromptRow::versions), pageField("behavior", &PromptRow::behavior),
                      pageField("spokenText", &PromptRow::spokenText));
};
template <>
struct PageFields<ReminderOption> {
  static constexpr auto all =
      std::make_tuple(pageField("minutes", &ReminderOption::minutes), pageField("text", &ReminderOption::text));
};
template <>
struct PageFields<ConfirmationPage> {
  static constexpr auto all =
      std::make_tuple(pageField("visible", &ConfirmationPage::visible), pageField("symbol", &ConfirmationPage::symbol),
                      pageField("title", &ConfirmationPage::title), pageField("text", &ConfirmationPage::text),
                      pageField("countdown", &ConfirmationPage::countdown), pageField("no", &ConfirmationPage::no),
                      pageField("yes", &ConfirmationPage::yes));
};
template <>
struct PageFields<DeferralPromptPage> {
  using Page = DeferralPromptPage;
  static constexpr auto all = std::make_tuple(
      pageField("visible", &Page::visible), pageField("host", &Page::host), pageField("mayClose", &Page::mayClose),
      pageField("symbol", &Page::symbol), pageField("symbolColor", &Page::symbolColor),
      pageField("title", &Page::title), pageField("subtitle", &Page::subtitle),
      pageField("explanation", &Page::explanation), pageField("pickerLabel", &Page::pickerLabel),
      pageField("options", &Page::options), pageField("selectedOption", &Page::selectedOption),
      pageField("reminderTime", &Page::reminderTime), pageField("autoInstall", &Page::autoInstall),
      pageField("remaining", &Page::remaining), pageField("countdown", &Page::countdown),
      pageField("countdownColor", &Page::countdownColor), pageField("defer", &Page::defer),
      pageField("install", &Page::install), pageField("deferIsPrimary", &Page::deferIsPrimary),
      pageField("rows", &Page::rows), pageField("confirmation", &Page::confirmation));
};

}  // namespace corvane
