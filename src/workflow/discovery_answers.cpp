#include "workflow/discovery_answers.h"

#include <set>

#include "base/localized.h"

namespace corvane {

Apps normalised(const Apps& records) {
  Apps apps = records;
  for (auto& app : apps) {
    if (app.teamIDMismatch || app.macAppStoreManaged)
      app.updateCheckFailed = false;
    else if (!app.newVersion)
      app.updateCheckFailed = true;
  }
  return apps;
}

Labels labelsOf(const Apps& apps) {
  Labels labels;
  labels.reserve(apps.size());
  for (const auto& app : apps) labels.push_back(app.label);
  return labels;
}

Labels labelsMissingFrom(const Apps& kept, const Apps& records) {
  LabelSet held;
  for (const auto& app : kept) held.insert(app.label);
  Labels missing;
  for (const auto& app : records)
    if (!held.contains(app.label)) missing.push_back(app.label);
  return missing;
}

std::string discoveryCompleteText(std::size_t count) {
  return localized("Discovery complete: found {} applications. Checking for updates…", count);
}

}  // namespace corvane
