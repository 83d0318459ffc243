// The narrow door to the diagnostic bundle, for who wants one on the Desktop and nothing else.
#pragma once

#include <filesystem>
#include <functional>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

// Main thread. Writes one bundle to the running user's Desktop and gives its path, once, in a later turn. Every failure
// has a text for the person at the screen. Whoever may go before the answer guards the completion.
using DiagnosticRun = std::function<void(Completion<Result<std::filesystem::path>>)>;

}  // namespace corvane
