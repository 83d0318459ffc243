// How the state of the workflow is worded: the status line, its symbol, and the lines of a pass or run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "workflow/status_fields.h"

namespace corvane {

// Localised. `now` is held against the grace that a late helper is given.
[[nodiscard]] std::string statusLine(const StatusFields& fields, Date now);

// The design name of the picture that goes with it.
[[nodiscard]] std::string_view statusSymbolName(const StatusFields& fields, Date now);

// What is said when a pass starts; `count` is the number of applications to check, 0 when not known.
[[nodiscard]] std::string startText(DiscoveryOperation operation, std::size_t count);

// "Check for Updates complete: …", by what is left and whether the cycle is complete.
[[nodiscard]] std::string checkCompleteText(const InventoryFields& inventory);

// Of a pass of the helper. `completed` is held to 0 … `total` - 1.
[[nodiscard]] std::string backgroundPatchStatusText(const std::optional<std::string>& displayName,
                                                    const std::optional<std::string>& label, std::int64_t completed,
                                                    std::int64_t total);

// "Updating <name> (<index> of <total>)…" or, in the background, "Background patching …".
[[nodiscard]] std::string patchProgressText(DiscoveryOperation operation, const std::string& name, std::int64_t index,
                                            std::int64_t total);

// "Waiting for you to quit <name>…"
[[nodiscard]] std::string waitingForQuitText(const std::string& name);

}  // namespace corvane
