// The prompt's own window as the workflow calls for it, whether or not a windows module is open.
#pragma once

#include <utility>

#include "workflow/prompt_presenter.h"

namespace corvane {

// Main thread. Remembers that the window is wanted, so that a module which opens later shows it.
class PromptWindows final : public PromptPresenter {
 public:
  void showStandaloneWindow() override {
    wanted_ = true;
    if (windows_ != nullptr) windows_->showStandaloneWindow();
  }
  void hideStandaloneWindow() override {
    wanted_ = false;
    if (windows_ != nullptr) windows_->hideStandaloneWindow();
  }

  // Null takes them away again.
  void attach(PromptPresenter* windows) {
    windows_ = windows;
    if (wanted_ && windows_ != nullptr) windows_->showStandaloneWindow();
  }

 private:
  PromptPresenter* windows_ = nullptr;
  bool wanted_ = false;
};

}  // namespace corvane
