// The first-run wizard in time: looks at the helper again and again while the wizard is shown.
#pragma once

#include <functional>
#include <optional>

#include "base/lease.h"
#include "base/observers.h"
#include "presentation/first_run_setup_page.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. Lives as long as the window that may show the wizard.
class FirstRunSetupController {
 public:
  // How often the helper is looked at; the elapsed texts move on with it.
  static constexpr Duration kRefresh = 1s;

  // `revealLog` may be absent; the button is not offered then.
  FirstRunSetupController(StatusViewModel& model, const WorkflowServices& services, std::function<void()> revealLog);

  [[nodiscard]] const FirstRunSetupPage& page() const { return page_; }
  [[nodiscard]] Lease observe(std::function<void()> changed) { return observers_.add(std::move(changed)); }

  // The control of a step by its key; what it does follows from the step's state.
  void act(const std::string& key);
  // Skip and Done alike: the wizard does not come back.
  void finish() { model_.completeFirstRunSetup(); }

 private:
  void tick();
  void refresh();

  StatusViewModel& model_;
  WorkflowServices services_;
  std::function<void()> revealLog_;
  std::optional<Date> step2InProgressSince_;
  FirstRunSetupPage page_;
  Observers observers_;
  Lease changes_;
  Lease refreshTimer_;
};

}  // namespace corvane
