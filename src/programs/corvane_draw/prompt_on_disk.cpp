#include "programs/corvane_draw/prompt_on_disk.h"

#include <algorithm>

#include "core/policies/deferral_manager.h"
#include "workflow/deferral_options.h"
#include "workflow/deferral_texts.h"

namespace corvane {

DeferralPromptPage promptOnDisk(const StatusViewModel& model, const WorkflowServices& services, bool confirming) {
  const auto config = services.preferences.loadConfiguration();
  const auto now = services.clock.now();
  const auto calendar = services.locale.calendar();
  const DeferralManager deferrals(config, services.preferences, services.clock, calendar);
  const bool hard = deferrals.checkDeadlines() == DeferralDeadlineStatus::hardDeadlineReached;

  DeferralFields fields;
  fields.showDeferralPrompt = true;
  fields.deferralPromptHost = DeferralPromptHost::standalone;
  fields.currentDeferralEscalation = hard ? DeferralEscalation::hard : DeferralEscalation::normal;
  fields.currentHardDeadlineDate = deferrals.hardDeadlineDate();
  const auto options =
      availableDeferralOptions(config, fields.currentDeferralEscalation, fields.currentHardDeadlineDate, now, calendar);
  fields.selectedDeferralMinutes = options.empty() ? config->deferralTimerDefault : options.front();

  const PageTexts texts{AppDisplayTitle(config)};
  auto page =
      makeDeferralPromptPage({.fields = fields,
                              .apps = model.deferralPromptApps(),
                              .inventory = model.fields().inventory.apps,
                              .options = options,
                              .explanation = hardDeadlineText(deferrals.getDeferralInfo(), config, now),
                              .remaining = model.deferralsRemainingSummary(),
                              .deferButtonIsPrimary = services.preferences.readDeferralDialogPrimaryButton() == "defer",
                              .hardMayClose = config->hardDeadlineDialogAllowClose},
                             now, services.locale, texts);
  tellTime(page,
           {.escalation = fields.currentDeferralEscalation,
            .timeoutAction = config->dialogTimeoutDeferralAction,
            .secondsLeft = std::max<std::int64_t>(config->dialogTimeoutDeferral, 1),
            .selectedMinutes = fields.selectedDeferralMinutes},
           now, services.locale, texts);
  if (confirming && !hard) page.confirmation = makeConfirmationPage(kConfirmationSeconds, texts);
  return page;
}

}  // namespace corvane
