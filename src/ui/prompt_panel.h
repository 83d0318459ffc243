// The prompt's own window.
#pragma once

#include "ui/floating_panel.h"
#include "ui/prompt_bridge.h"

namespace corvane::ui {

// Main thread.
class PromptPanel final : public FloatingPanel {
 public:
  explicit PromptPanel(PromptBridge& bridge) : FloatingPanel(QStringLiteral("PromptPanel"), bridge) {}
};

}  // namespace corvane::ui
