// The services of a user's program, each made once over the ports of its machine and handed down by reference.
#pragma once

#include <sys/types.h>

#include <string>

#include "app/prompt_windows.h"
#include "base/notification_center.h"
#include "base/work_queue.h"
#include "core/client/helper_installation_service.h"
#include "core/client/helper_service_client.h"
#include "core/discovery/label_install_facts.h"
#include "core/history/deferral_event_manager.h"
#include "core/history/helper_state_stores.h"
#include "core/history/label_history_caches.h"
#include "core/history/receipt_manager.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "core/preferences/preference_manager.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/files.h"
#include "platform/focus_state.h"
#include "platform/helper_channel.h"
#include "platform/helper_registration.h"
#include "platform/locale.h"
#include "platform/own_bundle.h"
#include "platform/power_source.h"
#include "platform/preference_domains.h"
#include "platform/running_applications.h"
#include "platform/session_lock.h"
#include "workflow/neutral_parts.h"
#include "workflow/workflow_services.h"

namespace corvane {

// What a user's program asks of its machine. Made by the mains; all outlive the services.
struct Ports {
  MainQueue& main;
  WorkQueue& work;
  Clock& clock;
  Locale& locale;
  Entropy& entropy;
  Files& files;
  PreferenceDomains& domains;
  RunningApplications& processes;
  Application& application;
  FocusState& focus;
  PowerSource& power;
  HelperChannel& channel;
  HelperRegistration& registration;
  OwnBundle& bundle;
  SessionLock& lock;
  LogSink& log;
  CorvaneConstants places;
  std::string userName;
};

// Main thread. Members are made in this order and go in the reverse.
class Services {
 public:
  explicit Services(Ports ports);

  [[nodiscard]] const Ports& ports() const { return ports_; }
  // With the notices and the sink of a program that has some; a program without leaves them out.
  [[nodiscard]] WorkflowServices workflow(DeferralNotices& notices, SelfUpdateDisplay& display, UsageSignals& signals);
  [[nodiscard]] WorkflowServices workflow() {
    return workflow(neutral.notices, neutral.selfUpdateDisplay, neutral.signals);
  }

  NotificationCenter notifications;
  PreferenceManager preferences;
  HelperServiceClient helper;
  HelperInstallationService installation;
  HelperBackgroundPatchStateStore helperState;
  HelperScheduledDiscoveryAppsStore scheduledApps;
  ReceiptManager receipts;
  DeferralEventManager deferralEvents;
  ReceiptsSnapshot receiptsSnapshot;
  LabelFailureHistoryCache failures;
  LabelInstallHistoryCache installs;
  LatestReceiptsCache latestReceipts;
  LabelFileInstallFacts installFacts;
  PromptWindows promptWindows;
  // What a program without notifications and signals has in their places.
  NeutralParts neutral;

 private:
  Ports ports_;
};

}  // namespace corvane
