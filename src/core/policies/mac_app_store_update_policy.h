// Which installed copies belong to the App Store, and whether the options take them over all the same.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace corvane {

struct MacAppStoreUpdatePolicy {
  // The bundle holds a store receipt. False for an absent or empty path. One look at the file system.
  [[nodiscard]] static bool hasMacAppStoreReceipt(const std::optional<std::string>& appPath, const Files& files);

  // The options say IGNORE_APP_STORE_APPS=yes, in any case of the value; the last mention counts.
  [[nodiscard]] static bool replacesAppStoreApps(std::string_view installomatorOptions);
};

}  // namespace corvane
