// A command carried out over the model: asks, waits, and says what came of it.
#pragma once

#include <functional>
#include <string_view>

#include "app/helper_start.h"
#include "core/client/helper_installation_service.h"
#include "core/client/xpc_service_client.h"
#include "core/history/receipt_manager.h"
#include "core/places.h"
#include "core/preferences/preference_manager.h"
#include "ctl/command.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "platform/session_lock.h"
#include "workflow/status_view_model.h"

namespace corvane::ctl {

// What a command has to do with; all outlive it. `pump` runs turns of the main queue until its argument
// holds or the time is over, and gives whether it holds.
struct World {
  StatusViewModel& model;
  PreferenceManager& preferences;
  HelperInstallationService& installation;
  HelperStart& helperStart;
  XPCServiceClient& helper;
  ReceiptManager& receipts;
  Locale& locale;
  Clock& clock;
  Files& files;
  const CorvaneConstants& places;
  SessionLock& lock;
  std::function<bool(const std::function<bool()>& done, Duration limit)> pump;
  std::function<void(std::string_view)> out;       // standard output
  std::function<void(std::string_view)> err;       // standard error
  std::function<void(std::string_view)> progress;  // one line that replaces itself; empty where none is shown
};

// Runs `command`, which is of the kind `run`. Prints one JSON object with `json`, errors included. Verbs that
// write claim the session first, so that they never work beside the application.
[[nodiscard]] ExitCode runCommand(const Command& command, const World& world);

// Says an error where the caller of the program looks for it: as an object on standard output with `json`.
ExitCode tellError(const Error& error, bool json, ExitCode code, const World& world);

}  // namespace corvane::ctl
