#include "ui/prompt_surface.h"

#include "core/preferences/display_title.h"

namespace corvane::ui {

PromptSurface::PromptSurface(DeferralPromptController& controller, const WorkflowServices& services)
    : controller_(controller), services_(services), bridge_(actions()), panel_(kPromptPanel, bridge_) {
  changes_ = controller_.observe([this] { refresh(); });
  refresh();
}

PromptActions PromptSurface::actions() {
  return {.select = [this](std::int64_t minutes) { controller_.select(minutes); },
          .defer = [this] { controller_.defer(); },
          .install = [this] { controller_.install(); },
          .accept = [this] { controller_.accept(); },
          .decline = [this] { controller_.decline(); },
          .close = [this] { controller_.close(); }};
}

void PromptSurface::refresh() {
  bridge_.setWindowTitle(toQString(AppDisplayTitle(services_.preferences.loadConfiguration()).current()));
  bridge_.setPage(controller_.page());
}

// The page comes a turn after the model's change, and the panel must not show the one before.
void PromptSurface::showStandaloneWindow() {
  services_.main.post(lifeline_.guard([this] {
    if (controller_.page().visible && !panel_.show())
      Logger(services_.log, "DeferralPromptWindowController").error("The prompt's window could not be made.");
  }));
}

}  // namespace corvane::ui
