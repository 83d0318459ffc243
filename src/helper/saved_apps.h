// The inventory that the application keeps in its preferences, as the helper's scans ask for it: parsed once for each
// state of the preferences. Changes nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "core/preferences/preference_manager.h"
#include "platform/preference_domains.h"

namespace corvane {

// Main thread. The file may hold megabytes, and settings are asked for several times a label.
class SavedApps {
 public:
  // `preferences` reads from `domains`.
  SavedApps(const PreferenceDomains& domains, const PreferenceManager& preferences)
      : domains_(domains), preferences_(preferences) {}

  // Never null; empty when there is none, or a damaged one.
  [[nodiscard]] std::shared_ptr<const Apps> current();

 private:
  const PreferenceDomains& domains_;
  const PreferenceManager& preferences_;
  std::pair<std::uint64_t, std::uint64_t> versions_;  // of the managed and the user's domain that apps_ is from
  std::shared_ptr<const Apps> apps_;
};

}  // namespace corvane
