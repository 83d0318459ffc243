#include "app/services.h"

#include <utility>

namespace corvane {

Services::Services(Ports ports)
    : notifications(ports.main),
      preferences(ports.domains, notifications, ports.log),
      helper(ports.channel, ports.entropy),
      installation({.registration = ports.registration,
                    .files = ports.files,
                    .bundle = ports.bundle,
                    .preferences = preferences,
                    .clock = ports.clock,
                    .main = ports.main,
                    .entropy = ports.entropy},
                   ports.places.helperHeartbeat()),
      helperState(ports.places.helperState(), ports.files, ports.log),
      scheduledApps(ports.places.helperDiscoveredApps(), ports.files, ports.log),
      receipts(ports.places.receipts(), ports.files, ports.log),
      deferralEvents(ports.places.deferralEventsFolder(), ports.userName, ports.files, ports.log),
      receiptsSnapshot(receipts, ports.files),
      failures(receiptsSnapshot),
      installs(receiptsSnapshot),
      latestReceipts(receiptsSnapshot),
      installFacts(ports.places.labelsFolder(), ports.places.root, Logger(ports.log, "LabelCatalog")),
      neutral(preferences),
      ports_(std::move(ports)) {}

WorkflowServices Services::workflow(DeferralNotices& notices, SelfUpdateDisplay& display, UsageSignals& signals) {
  return {.main = ports_.main,
          .work = ports_.work,
          .clock = ports_.clock,
          .locale = ports_.locale,
          .entropy = ports_.entropy,
          .notifications = notifications,
          .log = ports_.log,
          .files = ports_.files,
          .processes = ports_.processes,
          .application = ports_.application,
          .focus = ports_.focus,
          .power = ports_.power,
          .places = ports_.places,
          .preferences = preferences,
          .helper = helper,
          .installation = installation,
          .helperState = helperState,
          .scheduledApps = scheduledApps,
          .receipts = receipts,
          .deferralEvents = deferralEvents,
          .failures = failures,
          .installs = installs,
          .latestReceipts = latestReceipts,
          .installFacts = installFacts,
          .prompts = promptWindows,
          .notices = notices,
          .signals = signals,
          .selfUpdateDisplay = display};
}

}  // namespace corvane
