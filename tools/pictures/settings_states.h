// Settings pages of every look.
#pragma once

#include <string>
#include <vector>

#include "presentation/settings_page.h"

namespace corvane {

struct SettingsState {
  std::string name;  // of the picture
  SettingsPage page;
  bool dark = false;
  double textScale = 1;
  int width = 720;
  int height = 640;
};

// A page with a control of each kind, written by hand: what the window draws without knowing what it is about.
[[nodiscard]] SettingsPage everyKindOfControl();

// The four tabs as the form makes them: of a person who decides alone, of an organisation that decides everything and
// has long names, and in the test mode.
[[nodiscard]] std::vector<SettingsState> settingsTabStates();

// All of them, light and dark.
[[nodiscard]] std::vector<SettingsState> allSettingsStates();

}  // namespace corvane
