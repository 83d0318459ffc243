// Who shows the deferral prompt when it stands in a window of its own.
#pragma once

namespace corvane {

// Main thread. Each call takes effect at once and may be repeated; none answers. A program without windows has
// a presenter that does nothing.
class PromptPresenter {
 public:
  virtual ~PromptPresenter() = default;
  virtual void showStandaloneWindow() = 0;
  // Nothing when it was never made.
  virtual void hideStandaloneWindow() = 0;
};

}  // namespace corvane
