#include "presentation/deferral_prompt_page.h"
#include "base/localizable.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <unordered_map>

#include "presentation/countdown.h"
#include "workflow/deferral_texts.h"

namespace corvane {

namespace {

// From here on the countdown is told plainly instead of in passing.
constexpr std::int64_t kNearlyOver = 10;
// No choice means a later moment than this; more minutes than a calendar has are a slip of the pen.
constexpr std::int64_t kLongestReminder = 10LL * 366 * 24 * 60;

constexpr auto kLookingOnceMore = toLocalize("Making sure that these are the newest versions…");

std::string versionsText(const DeferralPromptApp& app, const PageTexts& texts) {
  if (app.forcedReinstall) return texts.localized("{} · Required reinstall", app.currentVersion);
  return texts.localized("{} → {}", app.currentVersion, app.newVersion);
}

std::string subtitleText(DeferralEscalation escalation, std::size_t count, const Locale& locale,
                         const PageTexts& texts) {
  const auto number = locale.number(static_cast<std::int64_t>(count));
  if (escalation == DeferralEscalation::hard)
    return count == 1
               ? texts.localized("Save your work, then update 1 application now. Further deferral is unavailable.")
               : texts.localized("Save your work, then update {} applications now. Further deferral is unavailable.",
                                 number);
  return count == 1 ? texts.localized("1 application ready to update.")
                    : texts.localized("{} applications ready to update.", number);
}

std::vector<PromptRow> rowsOf(const DeferralPromptInputs& inputs, const PageTexts& texts) {
  std::unordered_map<std::string_view, std::string_view> bundles;
  for (const auto& app : inputs.inventory)
    if (app.appPath) bundles.emplace(app.label.text, *app.appPath);
  std::vector<PromptRow> rows;
  rows.reserve(inputs.apps.size());
  for (const auto& app : inputs.apps) {
    const auto bundle = bundles.find(app.label.text);
    PromptRow row{.key = app.label.text,
                  .name = app.name,
                  .monogram = monogramOf(app.name),
                  .iconBundle = bundle == bundles.end() ? std::string() : std::string(bundle->second),
                  .versions = versionsText(app, texts),
                  .behavior = texts.localized(behaviorText(app.behavior)),
                  .spokenText = {}};
    row.spokenText = texts.localized("{}, {}, {}", row.name, row.versions, row.behavior);
    rows.push_back(std::move(row));
  }
  return rows;
}

void offerReminders(DeferralPromptPage& page, const DeferralPromptInputs& inputs, const Locale& locale,
                    const PageTexts& texts) {
  page.pickerLabel = texts.localized("Remind me in:");
  for (const auto minutes : inputs.options) {
    if (minutes == inputs.fields.selectedDeferralMinutes && page.selectedOption < 0)
      page.selectedOption = static_cast<std::int64_t>(page.options.size());
    page.options.push_back({.minutes = minutes, .text = deferralDurationText(minutes, locale)});
  }
}

}  // namespace

DeferralPromptPage makeDeferralPromptPage(const DeferralPromptInputs& inputs, Date now, const Locale& locale,
                                          const PageTexts& texts) {
  const auto& fields = inputs.fields;
  const bool hard = fields.currentDeferralEscalation == DeferralEscalation::hard;
  DeferralPromptPage page;
  page.visible = fields.showDeferralPrompt;
  page.host = rawName(fields.deferralPromptHost);
  page.mayClose = !hard || inputs.hardMayClose;
  page.symbol = hard ? "exclamationmark.octagon.fill" : "clock.badge.exclamationmark.fill";
  page.symbolColor = hard ? ColorRole::red : ColorRole::accent;
  page.title = texts.localized(hard ? toLocalize("Updates required") : toLocalize("Updates Available"));
  page.subtitle = subtitleText(fields.currentDeferralEscalation, inputs.apps.size(), locale, texts);
  if (hard) page.explanation = inputs.explanation.value_or("");
  page.rows = rowsOf(inputs, texts);
  if (!hard) {
    offerReminders(page, inputs, locale, texts);
    const auto& deadline = fields.currentHardDeadlineDate;
    if (deadline && *deadline > now)
      page.autoInstall = texts.localized("Auto-installs by {}", locale.mediumDateShortTime(*deadline));
    page.remaining = inputs.remaining.value_or("");
    page.defer = {.text = texts.localized("Defer"),
                  .help = texts.localized("Ask again at the time you chose"),
                  .visible = true,
                  .enabled = true};
  }
  page.install = {.text = texts.localized(hard ? toLocalize("Update Now") : toLocalize("Update")),
                  .help = texts.localized("Install these updates now"),
                  .visible = true,
                  .enabled = !(hard && inputs.isInstalling)};
  page.deferIsPrimary = inputs.deferButtonIsPrimary && !hard;
  return page;
}

void tellTime(DeferralPromptPage& page, const PromptMoment& moment, Date now, const Locale& locale,
              const PageTexts& texts) {
  const bool hard = moment.escalation == DeferralEscalation::hard;
  if (hard && moment.isInstalling) {
    page.countdown = texts.localized(kLookingOnceMore);
    page.countdownColor = ColorRole::secondary;
    return;
  }
  const auto time = countdownText(moment.secondsLeft);
  page.countdown = hard ? texts.localized("Updates will begin automatically in {}.", time)
                   : moment.timeoutAction == DeferralAction::defer
                       ? texts.localized("Corvane will automatically defer in {}.", time)
                       : texts.localized("Corvane will automatically install updates in {}.", time);
  page.countdownColor = moment.secondsLeft <= kNearlyOver ? ColorRole::primary : ColorRole::secondary;
  page.reminderTime.clear();
  if (hard || page.options.empty()) return;
  const auto when = now + std::chrono::minutes(std::clamp<std::int64_t>(moment.selectedMinutes, 0, kLongestReminder));
  page.reminderTime = texts.localized("You will be asked again {}.", absoluteMomentText(when, now, locale));
}

ConfirmationPage makeConfirmationPage(std::int64_t secondsLeft, const PageTexts& texts) {
  return {.visible = true,
          .symbol = "questionmark.circle.fill",
          .title = texts.localized("Install updates?"),
          .text = texts.localized("Are you sure you want to install updates?"),
          .countdown = texts.localized("Yes will be selected automatically in {}.", countdownText(secondsLeft)),
          .no = {.text = texts.localized("No"),
                 .help = texts.localized("Install nothing now"),
                 .visible = true,
                 .enabled = true},
          .yes = {.text = texts.localized("Yes"),
                  .help = texts.localized("Install the updates"),
                  .visible = true,
                  .enabled = true}};
}

ConfirmationPage makeAcceptedPage(const PageTexts& texts) {
  auto page = makeConfirmationPage(0, texts);
  page.title = texts.localized("Updates will be installed");
  page.text.clear();
  page.countdown = texts.localized(kLookingOnceMore);
  page.no.enabled = page.yes.enabled = false;
  return page;
}

}  // namespace corvane
