// The deferral prompt as it would stand at this moment, from the state on disk alone.
#pragma once

#include "presentation/deferral_prompt_page.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Asks nobody, arms and writes nothing: the versions are those last looked up, the countdown is at its start. Required
// once the hard deadline is reached. With `confirming` the question of a normal prompt stands in its place. It has no
// rows when nothing is pending.
[[nodiscard]] DeferralPromptPage promptOnDisk(const StatusViewModel& model, const WorkflowServices& services,
                                              bool confirming);

}  // namespace corvane
