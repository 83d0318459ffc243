// What a click on the menu-bar icon does while its panel may be open. Sees no window.
#pragma once

namespace corvane {

struct MenuBarIconClickPolicy {
  enum class Phase { mouseDown, mouseUp };
  enum class Action { deliver, swallow, toggleClosed };

  struct Decision {
    Action action = Action::deliver;
    bool swallowMouseUp = false;  // to be handed in with the next phase
    friend bool operator==(const Decision&, const Decision&) = default;
  };

  // A press with the panel open closes it, and the release that follows is swallowed so that it does not open it
  // again. Everything else goes its way.
  [[nodiscard]] static constexpr Decision action(Phase phase, bool panelVisible, bool swallowMouseUp) {
    if (phase == Phase::mouseUp) return {.action = swallowMouseUp ? Action::swallow : Action::deliver};
    if (panelVisible) return {.action = Action::toggleClosed, .swallowMouseUp = true};
    return {};
  }
};

}  // namespace corvane
