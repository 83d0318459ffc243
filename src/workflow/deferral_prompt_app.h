// One application as the deferral prompt shows it.
#pragma once

#include <string>

#include "core/records/app_info.h"
#include "core/records/deferral_records.h"

namespace corvane {

struct DeferralPromptApp {
  Label label;
  std::string name;
  std::string currentVersion;
  std::string newVersion;
  DeferralInstallBehavior behavior = DeferralInstallBehavior::updatesWhenInstalled;
  bool forcedReinstall = false;
  friend bool operator==(const DeferralPromptApp&, const DeferralPromptApp&) = default;
};

}  // namespace corvane
