// Who keeps the root helper running on this machine.
#pragma once

#include <filesystem>
#include <functional>

#include "platform/dbus/systemd_helper_registration.h"

namespace corvane {

enum class HelperKeeper {
  serviceManager,  // a helper that is installed for the whole machine
  ownChild,        // a daemon of the one user
};

// The service manager, where it knows a unit of the helper, and where it does not answer: beside a helper that is
// installed there must not be a second one. The user's own on another root than "/", for which `ask` is not called, and
// on a machine without such a manager or unit.
[[nodiscard]] HelperKeeper helperKeeper(const std::filesystem::path& root, const std::function<Heard<UnitFile>()>& ask);

}  // namespace corvane
