// The helper's operations over its channel: words requests, reads answers. It keeps no connection, no
// time-out and no memory of what it asked.
#pragma once

#include "core/client/helper_messages.h"
#include "core/client/xpc_service_client.h"
#include "platform/entropy.h"
#include "platform/helper_channel.h"

namespace corvane {

// Main thread. Both ports must outlive it; answers under way are delivered even when the client has gone.
class HelperServiceClient final : public XPCServiceClient {
 public:
  HelperServiceClient(HelperChannel& channel, Entropy& entropy) : channel_(channel), entropy_(entropy) {}

  void getStatus(Completion<Result<StatusInfo>> done) override;
  void discoverInstalledApps(Completion<Result<Apps>> done) override;
  void discoverAppsWithUpdates(Completion<Result<Apps>> done) override;
  void discoverAppsForLabels(const Labels& labels, bool includeLatestVersions, Completion<Result<Apps>> done) override;
  void startPatching(const Labels& labels, const Labels& alsoStageLabels,
                     Completion<Result<PatchRunAnswer>> done) override;
  void getPatchingProgress(Completion<PatchProgressInfo> done) override;

 private:
  template <class T>
  void send(HelperQuestion question, Result<T> (*read)(const JsonValue&), Completion<Result<T>> done);

  HelperChannel& channel_;
  Entropy& entropy_;
};

}  // namespace corvane
