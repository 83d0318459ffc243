#include "workflow/patch_messages.h"

#include <fmt/format.h>

#include "base/localized.h"
#include "workflow/status_texts.h"

namespace corvane {

std::string startOfRunText(DiscoveryOperation operation, const std::string& name, std::size_t count) {
  return operation == DiscoveryOperation::patchBackground
             ? backgroundPatchStatusText(name, std::nullopt, 0, 0)
             : patchProgressText(operation, name, 1, static_cast<std::int64_t>(count));
}

std::string withDisplayNames(std::string message, const Apps& apps) {
  for (const auto& app : apps) {
    const auto name = app.displayName();
    const auto& label = app.label.text;
    if (label.empty() || name.empty() || name == label) continue;
    for (auto at = message.find(label); at != std::string::npos; at = message.find(label, at + name.size()))
      message.replace(at, label.size(), name);
  }
  return message;
}

}  // namespace corvane
