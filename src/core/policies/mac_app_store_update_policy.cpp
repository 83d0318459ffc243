#include "core/policies/mac_app_store_update_policy.h"

#include <filesystem>

#include "core/preferences/options_codec.h"

namespace corvane {

bool MacAppStoreUpdatePolicy::hasMacAppStoreReceipt(const std::optional<std::string>& appPath, const Files& files) {
  if (!appPath || appPath->empty()) return false;
  return files.exists(std::filesystem::path(*appPath) / "Contents/_MASReceipt/receipt");
}

bool MacAppStoreUpdatePolicy::replacesAppStoreApps(std::string_view installomatorOptions) {
  return optionIs(installomatorOptions, "IGNORE_APP_STORE_APPS", "yes");
}

}  // namespace corvane
