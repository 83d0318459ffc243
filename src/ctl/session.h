// A command carried out over the model: asks, waits, and says what came of it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include "app/helper_start.h"
#include "ctl/command.h"
#include "platform/session_lock.h"
#include "workflow/workflow_services.h"

namespace corvane::ctl {

// What a command has to do with; all outlive it. `pump` runs turns of the main queue until its argument
// holds or the time is over, and gives whether it holds.
struct World {
  WorkflowServices services;
  HelperStart& helperStart;
  SessionLock& stateLock;
  std::function<bool(const std::function<bool()>& done, Duration limit)> pump;
  // Writes a diagnostic bundle to a path as it was typed, a relative one from the working folder.
  std::function<Result<std::filesystem::path>(std::string_view output)> writeBundle;
  std::optional<std::size_t> columns;              // of the terminal that standard output is
  std::function<void(std::string_view)> out;       // standard output
  std::function<void(std::string_view)> err;       // standard error
  std::function<void(std::string_view)> progress;  // one line that replaces itself; empty where none is shown
};

// Runs `command`, which is of the kind `run`, over a model of its own. Prints one JSON object with `json`, errors
// included. Verbs that write claim the state before the model loads it, so that they never work beside the application
// or one another, nor on what the other has replaced since.
[[nodiscard]] ExitCode runCommand(const Command& command, const World& world);

// Says an error where the caller of the program looks for it: as an object on standard output with `json`.
ExitCode tellError(const Error& error, bool json, ExitCode code, const World& world);

}  // namespace corvane::ctl
