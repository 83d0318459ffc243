// What the application asks of the root helper. How it travels is not told here.
#pragma once

#include "base/error.h"
#include "base/task.h"
#include "core/records/app_info.h"
#include "core/records/helper_records.h"

namespace corvane {

// The domain of errors that the helper itself answered; `discoveryFailed` is told apart by its callers,
// all other codes mean "could not be contacted or did not understand".
struct XPCError {
  static constexpr const char* domain = "CRVHelper";
  static constexpr int discoveryFailed = 1;

  [[nodiscard]] static Error discovery(std::string text) {
    return {.domain = domain, .code = discoveryFailed, .text = std::move(text)};
  }
  [[nodiscard]] static bool isDiscoveryFailed(const Error& error) {
    return error.domain == domain && error.code == discoveryFailed;
  }
};

// Main thread. Every operation completes exactly once, on the main queue in a later turn. There is no
// time-out that callers may rely on: watching the clock is theirs.
class XPCServiceClient {
 public:
  virtual ~XPCServiceClient() = default;
  virtual void getStatus(Completion<Result<StatusInfo>> done) = 0;
  virtual void discoverInstalledApps(Completion<Result<Apps>> done) = 0;
  virtual void discoverAppsWithUpdates(Completion<Result<Apps>> done) = 0;
  virtual void discoverAppsForLabels(const Labels& labels, bool includeLatestVersions,
                                     Completion<Result<Apps>> done) = 0;
  // `alsoStageLabels`: installers to download in the same run without installing them. With no `labels` the
  // helper only stages.
  virtual void startPatching(const Labels& labels, const Labels& alsoStageLabels,
                             Completion<Result<PatchRunAnswer>> done) = 0;
  // No failure path: a helper out of reach answers as one that is not active.
  virtual void getPatchingProgress(Completion<PatchProgressInfo> done) = 0;
};

}  // namespace corvane
