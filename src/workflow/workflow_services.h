// What the workflow uses of the world: one struct of references, handed down at construction. Everything in
// it outlives the model.
#pragma once

#include "base/notification_center.h"
#include "base/work_queue.h"
#include "core/client/helper_installation_service.h"
#include "core/client/xpc_service_client.h"
#include "core/discovery/app_discovery_service.h"
#include "core/history/deferral_event_manager.h"
#include "core/history/helper_state_stores.h"
#include "core/history/label_history_caches.h"
#include "core/history/receipt_manager.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "core/policies/deferral_install_behavior_resolver.h"
#include "core/preferences/preference_manager.h"
#include "core/records/usage_signals.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/files.h"
#include "platform/focus_state.h"
#include "platform/locale.h"
#include "platform/power_source.h"
#include "platform/running_applications.h"
#include "workflow/deferral_notices.h"
#include "workflow/prompt_presenter.h"
#include "workflow/self_update_display.h"

namespace corvane {

struct WorkflowServices {
  MainQueue& main;
  WorkQueue& work;
  Clock& clock;
  Locale& locale;
  Entropy& entropy;
  NotificationCenter& notifications;
  LogSink& log;
  Files& files;
  RunningApplications& processes;
  Application& application;
  FocusState& focus;
  PowerSource& power;
  const CorvaneConstants& places;

  PreferenceManager& preferences;
  XPCServiceClient& helper;
  HelperInstallationService& installation;
  HelperBackgroundPatchStateStore& helperState;
  HelperScheduledDiscoveryAppsStore& scheduledApps;
  ReceiptManager& receipts;
  DeferralEventManager& deferralEvents;
  LabelFailureHistoryCache& failures;
  LabelInstallHistoryCache& installs;
  LatestReceiptsCache& latestReceipts;
  LabelInstallFactsSource& installFacts;

  PromptPresenter& prompts;
  DeferralNotices& notices;
  UsageSignals& signals;
  SelfUpdateDisplay& selfUpdateDisplay;
};

}  // namespace corvane
