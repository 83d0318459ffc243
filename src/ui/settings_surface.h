// Opens the settings window, and drops it with all that was not saved when its user closes it.
#pragma once

#include <memory>

#include "base/lifeline.h"
#include "presentation/settings_controller.h"
#include "ui/settings_window.h"

namespace corvane::ui {

// Main thread. What it is made of outlives it.
class SettingsSurface {
 public:
  SettingsSurface(StatusViewModel& model, const WorkflowServices& services, const SettingsParts& parts,
                  PromptBridge& prompt);
  ~SettingsSurface();

  // A window that is open comes to the front with its edits; else one is made from what is stored.
  void open();
  void setAppearance(const Appearance& appearance);
  // Null while none is open.
  [[nodiscard]] SettingsWindow* window();

 private:
  struct Open;
  void dropClosed();

  StatusViewModel& model_;
  WorkflowServices services_;
  SettingsParts parts_;
  PromptBridge& prompt_;
  Appearance appearance_;
  std::unique_ptr<Open> open_;
  Lifeline lifeline_;
};

}  // namespace corvane::ui
