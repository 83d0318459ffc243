// The question before an install in a window of its own.
#pragma once

#include "ui/confirmation_bridge.h"
#include "ui/floating_panel.h"

namespace corvane::ui {

// Main thread.
class ConfirmationPanel final : public FloatingPanel {
 public:
  explicit ConfirmationPanel(ConfirmationBridge& bridge) : FloatingPanel(QStringLiteral("ConfirmationPanel"), bridge) {}
};

}  // namespace corvane::ui
