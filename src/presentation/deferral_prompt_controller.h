// The deferral prompt in time: its page, its countdown, and the confirmation before an install. It runs without a
// window; whoever shows the page only hands its clicks on.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "base/lease.h"
#include "base/observers.h"
#include "presentation/countdown.h"
#include "presentation/deferral_prompt_page.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. One for the life of the process, as the model.
class DeferralPromptController {
 public:
  DeferralPromptController(StatusViewModel& model, const WorkflowServices& services);

  // What it tells of time was so at the last change; it is worded when somebody asks.
  [[nodiscard]] const DeferralPromptPage& page() const;

  // Called after the page changed: by the model in its turn, by the clock every second while a prompt stands.
  [[nodiscard]] Lease observe(std::function<void()> changed) { return observers_.add(std::move(changed)); }

  void select(std::int64_t minutes);
  void defer();
  // At hard the install starts; otherwise the countdown pauses and the confirmation asks.
  void install();
  void accept();
  void decline();
  // The close button. Refused at hard, unless the settings allow it and something is armed.
  void close();

 private:
  // What the countdown belongs to; a new one is a new countdown.
  struct Presentation {
    std::int64_t generation = 0;
    DeferralEscalation escalation = DeferralEscalation::normal;
    friend bool operator==(const Presentation&, const Presentation&) = default;
  };

  // What the clock has changed.
  struct Moment {
    Date now;
    std::optional<PromptMoment> prompt;               // absent while none stands
    std::optional<std::int64_t> confirmationSeconds;  // absent without a confirmation
    bool accepted = false;
  };

  void modelChanged();
  void rebuild();
  void build() const;
  void tell();
  void timedOut();
  void endConfirmation();
  // The prompt that stands in the model is the one that was told of: an answer given to another one counts for nothing.
  [[nodiscard]] bool isCurrent() const { return shown_.has_value() && shown_ == current(); }
  [[nodiscard]] bool isInstalling() const;
  [[nodiscard]] bool isConfirming() const { return isCurrent() && confirming_ == shown_; }
  [[nodiscard]] std::optional<Presentation> current() const;

  StatusViewModel& model_;
  WorkflowServices services_;
  mutable PageTexts texts_;
  mutable DeferralPromptPage page_;
  mutable bool isBuilt_ = false;  // of the model as it stands
  mutable std::optional<Moment> unworded_;
  DeferralAction timeoutAction_ = DeferralAction::defer;
  std::optional<Presentation> shown_;       // absent while no prompt stands
  std::optional<Presentation> confirming_;  // whose install waits for a yes
  bool accepted_ = false;                   // the yes was given, and the install waits for its check
  std::int64_t resumeSeconds_ = 0;          // what the prompt's countdown had left when the confirmation opened
  Countdown countdown_;
  Countdown confirmation_;
  Observers observers_;
  Lease changes_;
};

}  // namespace corvane
