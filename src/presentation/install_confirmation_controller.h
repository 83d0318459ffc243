// The question before an install that was asked for outside of the deferral prompt, in time. It runs without a window;
// whoever shows the page only hands its answers on.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "base/lease.h"
#include "base/observers.h"
#include "base/task.h"
#include "presentation/countdown.h"
#include "presentation/deferral_prompt_page.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. One for the life of the process, as the model.
class InstallConfirmationController {
 public:
  InstallConfirmationController(StatusViewModel& model, const WorkflowServices& services);

  // Update All of the menu bar: asks, and installs without the prompt on a yes.
  void confirmUpdateAll();

  // Asks, with a new countdown; silence until its end is a yes. One of both runs, once, after the page was taken away.
  // A question that stands already is replaced: neither of its answers is given any more.
  void show(Task onConfirm, Task onDecline);
  void accept();
  // No, or the window was closed.
  void decline();

  [[nodiscard]] const ConfirmationPage& page() const { return page_; }
  // Grows with each question.
  [[nodiscard]] std::int64_t question() const { return question_; }

  // Called after the page changed: at a question and its answer, and by the clock every second between them.
  [[nodiscard]] Lease observe(std::function<void()> changed) { return observers_.add(std::move(changed)); }

 private:
  void answer(Task& chosen);
  void tell();

  StatusViewModel& model_;
  WorkflowServices services_;
  ConfirmationPage page_;
  std::int64_t question_ = 0;
  Task onConfirm_;
  Task onDecline_;
  Countdown countdown_;
  Observers observers_;
};

}  // namespace corvane
