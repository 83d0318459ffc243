#include "presentation/deferral_prompt_controller.h"

#include <chrono>
#include <utility>

#include "core/preferences/display_title.h"

namespace corvane {

DeferralPromptController::DeferralPromptController(StatusViewModel& model, const WorkflowServices& services)
    : model_(model),
      services_(services),
      texts_(AppDisplayTitle(services_.preferences.loadConfiguration())),
      countdown_(
          services_.main, services_.clock, [this] { tell(); }, [this] { timedOut(); }),
      confirmation_(
          services_.main, services_.clock, [this] { tell(); }, [this] { accept(); }) {
  changes_ = model_.observe([this] { modelChanged(); });
  modelChanged();
}

std::optional<DeferralPromptController::Presentation> DeferralPromptController::current() const {
  const auto& fields = model_.fields().deferral;
  if (!fields.showDeferralPrompt) return std::nullopt;
  return Presentation{.generation = fields.deferralPromptGeneration, .escalation = fields.currentDeferralEscalation};
}

void DeferralPromptController::modelChanged() {
  const auto stands = current();
  if (!stands && !shown_) return;
  if (shown_ != stands) {
    shown_ = stands;
    endConfirmation();
    if (stands)
      countdown_.start(model_.promptCountdownSeconds());
    else
      countdown_.stop();
  }
  rebuild();
}

void DeferralPromptController::rebuild() {
  timeoutAction_ = services_.preferences.loadConfiguration()->dialogTimeoutDeferralAction;
  isBuilt_ = false;
  tell();
}

void DeferralPromptController::tell() {
  Moment moment{.now = services_.clock.now()};
  if (shown_)
    moment.prompt = {.escalation = shown_->escalation,
                     .timeoutAction = timeoutAction_,
                     .secondsLeft = isConfirming() ? resumeSeconds_ : countdown_.remainingSeconds(),
                     .selectedMinutes = model_.fields().deferral.selectedDeferralMinutes,
                     .isInstalling = isInstalling()};
  if (isConfirming()) moment.confirmationSeconds = confirmation_.remainingSeconds();
  moment.accepted = accepted_;
  unworded_ = moment;
  observers_.tell();
}

void DeferralPromptController::build() const {
  const auto config = services_.preferences.loadConfiguration();
  texts_ = PageTexts(AppDisplayTitle(config));
  if (!shown_) {
    page_.visible = false;
    return;
  }
  const auto apps = model_.deferralPromptApps();
  page_ = makeDeferralPromptPage(
      {.fields = model_.fields().deferral,
       .apps = apps,
       .inventory = model_.fields().inventory.apps,
       .options = model_.availableDeferralOptions(),
       .explanation = model_.hardDeadlineExplanation(),
       .remaining = model_.deferralsRemainingSummary(),
       .deferButtonIsPrimary = services_.preferences.readDeferralDialogPrimaryButton() == "defer",
       .hardMayClose = config->hardDeadlineDialogAllowClose,
       .isInstalling = isInstalling()},
      services_.clock.now(), services_.locale, texts_);
}

// The clock goes on and the model changes whether or not a window shows the page.
const DeferralPromptPage& DeferralPromptController::page() const {
  if (!std::exchange(isBuilt_, true)) build();
  const auto moment = std::exchange(unworded_, std::nullopt);
  if (!moment) return page_;
  if (moment->prompt) tellTime(page_, *moment->prompt, moment->now, services_.locale, texts_);
  page_.confirmation = !moment->confirmationSeconds ? ConfirmationPage()
                       : moment->accepted           ? makeAcceptedPage(texts_)
                                                    : makeConfirmationPage(*moment->confirmationSeconds, texts_);
  return page_;
}

bool DeferralPromptController::isInstalling() const {
  const auto& fields = model_.fields().updateAll;
  return fields.installNowQueued || fields.userRecheckInFlight;
}

// What is armed may have been put off while the countdown ran or the Mac slept, and the prompt does not begin before
// it.
void DeferralPromptController::timedOut() {
  if (!isCurrent()) return;
  const auto armed = services_.preferences.readNextAutoLaunch();
  const auto now = services_.clock.now();
  if (shown_->escalation == DeferralEscalation::hard && armed && *armed > now) {
    countdown_.start(std::chrono::ceil<std::chrono::seconds>(*armed - now).count());
    return tell();
  }
  model_.dialogTimeoutElapsed();
}

void DeferralPromptController::select(std::int64_t minutes) { model_.setSelectedDeferralMinutes(minutes); }

void DeferralPromptController::defer() {
  if (isCurrent() && !isConfirming()) model_.deferUpdates(false);
}

void DeferralPromptController::install() {
  if (!isCurrent() || isConfirming()) return;
  if (shown_->escalation == DeferralEscalation::hard) return model_.installNow();
  resumeSeconds_ = countdown_.remainingSeconds();
  countdown_.stop();
  confirming_ = shown_;
  confirmation_.start(kConfirmationSeconds);
  tell();
}

// The answer stays given while the install waits for its turn: the prompt's countdown does not come back.
void DeferralPromptController::accept() {
  if (!isConfirming() || accepted_) return;
  confirmation_.stop();
  accepted_ = true;
  model_.installNow();
  tell();
}

void DeferralPromptController::decline() {
  if (!isConfirming() || accepted_) return;
  endConfirmation();
  countdown_.start(resumeSeconds_);
  tell();
}

void DeferralPromptController::endConfirmation() {
  confirming_.reset();
  accepted_ = false;
  confirmation_.stop();
}

void DeferralPromptController::close() { model_.closeDeferralPrompt(); }

}  // namespace corvane
