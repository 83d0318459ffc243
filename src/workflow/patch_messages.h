// How a run's texts are worded. Pure.
#pragma once

#include <string>

#include "core/records/app_info.h"
#include "workflow/status_fields.h"

namespace corvane {

// What is said when a run starts with the application `name`. Localised.
[[nodiscard]] std::string startOfRunText(DiscoveryOperation operation, const std::string& name, std::size_t count);

// The helper's message with each label of `apps` replaced by its display name, for people to read.
[[nodiscard]] std::string withDisplayNames(std::string message, const Apps& apps);

}  // namespace corvane
