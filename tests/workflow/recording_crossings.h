// The other rooms as one room sees them: every arrow out of it is written down, none leads anywhere.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "workflow/crossings.h"

namespace corvane {

class RecordingCrossings final : public Crossings {
 public:
  std::vector<std::string> calls;
  AppFacts answeredFacts;
  bool defersForFocus = false;

  AppFacts facts() override { return answeredFacts; }
  void replaceApps(Apps) override { calls.emplace_back("replaceApps"); }
  void recomputeCounts(SideEffects sideEffects) override {
    calls.emplace_back(sideEffects == SideEffects::run ? "recomputeCounts" : "recomputeCounts suppressed");
  }
  void storeApps() override { calls.emplace_back("storeApps"); }
  void storeFingerprint() override { calls.emplace_back("storeFingerprint"); }
  void recordDiscovery(Date) override { calls.emplace_back("recordDiscovery"); }
  void recordUpdateCheck(Date) override { calls.emplace_back("recordUpdateCheck"); }
  void refreshDeadlineDisplay() override { calls.emplace_back("refreshDeadlineDisplay"); }
  void invalidateReceiptCaches() override { calls.emplace_back("invalidateReceiptCaches"); }
  void forgetDeferralEvents() override { calls.emplace_back("forgetDeferralEvents"); }
  void discoverInstalledApps() override { calls.emplace_back("discoverInstalledApps"); }
  void checkForUpdates(const Labels& labels) override { calls.push_back("checkForUpdates " + joined(labels)); }
  void updatesPutOff(DiscoveryOperation, const Labels&) override { calls.emplace_back("updatesPutOff"); }
  void patchErrorFollowUp(DiscoveryOperation, const Labels&, const std::string&) override {
    calls.emplace_back("patchErrorFollowUp");
  }
  void completePatchingCycle() override { calls.emplace_back("completePatchingCycle"); }
  void startBlockingPromptWatch(const std::string& name) override {
    calls.push_back("startBlockingPromptWatch " + name);
  }
  void stopBlockingPromptWatch() override { calls.emplace_back("stopBlockingPromptWatch"); }
  void renameBlockingPrompt(const std::string& name) override { calls.push_back("renameBlockingPrompt " + name); }
  void recordDeferralEvents(const Labels& labels, DeferralEventType, std::optional<std::int64_t>,
                            std::optional<DeferralEscalation>) override {
    calls.push_back("recordDeferralEvents " + joined(labels));
  }
  void recheck(const Labels& labels, Task) override { calls.push_back("recheck " + joined(labels)); }
  void patchAll(const Labels& labels) override { calls.push_back("patchAll " + joined(labels)); }
  void patchSingle(const Label& label) override { calls.push_back("patchSingle " + label.text); }
  void updateAll(DeferralPromptHost) override { calls.emplace_back("updateAll"); }
  bool applyAutomaticFocusDeferralIfNeeded() override {
    calls.emplace_back("applyAutomaticFocusDeferralIfNeeded");
    return defersForFocus;
  }
  void installNow() override { calls.emplace_back("installNow"); }
  void armEnforcement(HardPromptReason) override { calls.emplace_back("armEnforcement"); }
  void setPromptHost(DeferralPromptHost) override { calls.emplace_back("setPromptHost"); }
  void askUser(DeferralEscalation) override { calls.emplace_back("askUser"); }
  void dismissDeferralPrompt() override { calls.emplace_back("dismissDeferralPrompt"); }
  void deadlineRead(std::optional<Date>) override { calls.emplace_back("deadlineRead"); }
  void deadlineSettled() override { calls.emplace_back("deadlineSettled"); }
  void refreshHelperState(bool) override { calls.emplace_back("refreshHelperState"); }
  void evaluateAutoReset() override { calls.emplace_back("evaluateAutoReset"); }
  void pendingUpdatesCounted() override { calls.emplace_back("pendingUpdatesCounted"); }
  void refreshFailed() override { calls.emplace_back("refreshFailed"); }
  void forgetStagedLabels() override { calls.emplace_back("forgetStagedLabels"); }
  void forgetClosedAppsAttempt() override { calls.emplace_back("forgetClosedAppsAttempt"); }
  void fieldsChanged() override {}
};

}  // namespace corvane
