// From a property list to the settings that it would put into our managed domain: a profile's payloads, or a plain list
// of the settings themselves. Pure.
#pragma once

#include "core/preferences/settings_validation.h"

namespace corvane {

struct ProfileSettings {
  bool profile = false;  // else a plain list
  PlistDict settings;    // of all payloads for our domain; of a key that two set, the first
  SettingFindings findings;
};

// Fails, in the domain "CRVProfile", when there is nothing of ours to look at; the text says why and what to do.
[[nodiscard]] Result<ProfileSettings> profileSettings(const PlistValue& root);

}  // namespace corvane
