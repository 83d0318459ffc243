// The deferral prompt in every state, made by the real page model.
#pragma once

#include <string>
#include <vector>

#include "presentation/deferral_prompt_page.h"

namespace corvane {

struct PromptState {
  std::string name;  // of the picture
  DeferralPromptPage page;
  bool inDashboard = false;
  bool inOwnPanel = false;  // the confirmation alone
  bool dark = false;
  double textScale = 1;
};

// A normal prompt of `apps` applications in its own window.
[[nodiscard]] DeferralPromptPage promptPage(std::size_t apps,
                                            DeferralEscalation escalation = DeferralEscalation::normal,
                                            DeferralPromptHost host = DeferralPromptHost::standalone);

// All that is drawn into pictures, light and dark.
[[nodiscard]] std::vector<PromptState> allPromptStates();

}  // namespace corvane
