// The enumerations that cross between folders, with their stored raw strings and display texts.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/ascii.h"
#include "base/localizable.h"

namespace corvane {

enum class PatchingStatus { success, failure, skipped };
enum class DeferralEventType { userDeferred, focusSuppressed, deadlineForced, installationStarted };
enum class DeferralDeadlineStatus { normal, focusDeadlineReached, hardDeadlineReached };
enum class DeferralEscalation { normal, focus, hard };
enum class HardDeadlineTrigger { count, date, countAndDate };
enum class DeferralAction { defer, continueUpdates };
enum class BackgroundPatchSchedulerMode { inApp, helperDaemon };
enum class SelfUpdateFrequency { daily, weekly, monthly };
enum class DiscoveryFrequency { daily, weekly, off };
enum class InstallomatorVersion { release, main, custom };
enum class WebhookFeature { off, failures, all };
enum class OrdinalValue { first, second, third, fourth, fifth, final };
enum class WeekdayIndex { sunday, monday, tuesday, wednesday, thursday, friday, saturday };
enum class VersionComparisonMethod { isAtLeast, equalTo };
enum class CRVNotificationType {
  updatesAvailable,
  acPowerRequired,
  deferralResuming,
  hardDeadlineReminder,
  selfUpdateAvailable,
  backgroundPatchStarted,
  backgroundPatchCompleted,
  backgroundPatchFailed
};
enum class CRVNotificationPresentation { banner, persistent };

// One case: its stored raw string (also what logs and JSON show) and its display text.
template <class E>
struct CaseName {
  E value;
  std::string_view raw;
  std::string_view display;
};

// The cases of an enumeration in order; specialised in enumerations.cpp's companion below.
template <class E>
struct CaseNames;

#define CORVANE_CASES(E, ...)                                            \
  template <>                                                            \
  struct CaseNames<E> {                                                  \
    static constexpr auto all = std::to_array<CaseName<E>>(__VA_ARGS__); \
  }

CORVANE_CASES(PatchingStatus, {{PatchingStatus::success, "success", toLocalize("Success")},
                               {PatchingStatus::failure, "failure", toLocalize("Failure")},
                               {PatchingStatus::skipped, "skipped", toLocalize("Skipped")}});
CORVANE_CASES(DeferralEventType,
              {{DeferralEventType::userDeferred, "userDeferred", toLocalize("Deferred")},
               {DeferralEventType::focusSuppressed, "focusSuppressed", toLocalize("Focus suppressed")},
               {DeferralEventType::deadlineForced, "deadlineForced", toLocalize("Deadline forced")},
               {DeferralEventType::installationStarted, "installationStarted", toLocalize("Install started")}});
CORVANE_CASES(DeferralDeadlineStatus, {{DeferralDeadlineStatus::normal, "normal", "normal"},
                                       {DeferralDeadlineStatus::focusDeadlineReached, "focusDeadlineReached",
                                        toLocalize("focusDeadlineReached")},
                                       {DeferralDeadlineStatus::hardDeadlineReached, "hardDeadlineReached",
                                        toLocalize("hardDeadlineReached")}});
CORVANE_CASES(DeferralEscalation, {{DeferralEscalation::normal, "normal", "normal"},
                                   {DeferralEscalation::focus, "focus", "focus"},
                                   {DeferralEscalation::hard, "hard", "hard"}});
CORVANE_CASES(HardDeadlineTrigger, {{HardDeadlineTrigger::count, "count", toLocalize("You have used every deferral.")},
                                    {HardDeadlineTrigger::date, "date", toLocalize("The deadline date has passed.")},
                                    {HardDeadlineTrigger::countAndDate, "countAndDate",
                                     toLocalize("You have used every deferral and the deadline date has passed.")}});
CORVANE_CASES(DeferralAction,
              {{DeferralAction::defer, "defer", "defer"}, {DeferralAction::continueUpdates, "continue", "continue"}});
CORVANE_CASES(BackgroundPatchSchedulerMode,
              {{BackgroundPatchSchedulerMode::inApp, "inApp", toLocalize("In-app")},
               {BackgroundPatchSchedulerMode::helperDaemon, "helperDaemon", toLocalize("Helper daemon")}});
CORVANE_CASES(SelfUpdateFrequency, {{SelfUpdateFrequency::daily, "daily", toLocalize("Daily")},
                                    {SelfUpdateFrequency::weekly, "weekly", toLocalize("Weekly")},
                                    {SelfUpdateFrequency::monthly, "monthly", toLocalize("Monthly")}});
CORVANE_CASES(DiscoveryFrequency, {{DiscoveryFrequency::daily, "daily", toLocalize("Daily")},
                                   {DiscoveryFrequency::weekly, "weekly", toLocalize("Weekly")},
                                   {DiscoveryFrequency::off, "off", toLocalize("Off")}});
CORVANE_CASES(InstallomatorVersion, {{InstallomatorVersion::release, "release", toLocalize("Release")},
                                     {InstallomatorVersion::main, "main", toLocalize("Main")},
                                     {InstallomatorVersion::custom, "custom", toLocalize("Custom")}});
CORVANE_CASES(WebhookFeature, {{WebhookFeature::off, "off", toLocalize("Off")},
                               {WebhookFeature::failures, "failures", toLocalize("Failures Only")},
                               {WebhookFeature::all, "all", toLocalize("All")}});
CORVANE_CASES(OrdinalValue, {{OrdinalValue::first, "first", toLocalize("First")},
                             {OrdinalValue::second, "second", toLocalize("Second")},
                             {OrdinalValue::third, "third", toLocalize("Third")},
                             {OrdinalValue::fourth, "fourth", toLocalize("Fourth")},
                             {OrdinalValue::fifth, "fifth", toLocalize("Fifth")},
                             {OrdinalValue::final, "final", toLocalize("Last")}});
CORVANE_CASES(WeekdayIndex, {{WeekdayIndex::sunday, "sunday", toLocalize("Sunday")},
                             {WeekdayIndex::monday, "monday", toLocalize("Monday")},
                             {WeekdayIndex::tuesday, "tuesday", toLocalize("Tuesday")},
                             {WeekdayIndex::wednesday, "wednesday", toLocalize("Wednesday")},
                             {WeekdayIndex::thursday, "thursday", toLocalize("Thursday")},
                             {WeekdayIndex::friday, "friday", toLocalize("Friday")},
                             {WeekdayIndex::saturday, "saturday", toLocalize("Saturday")}});
CORVANE_CASES(VersionComparisonMethod,
              {{VersionComparisonMethod::isAtLeast, "IS_AT_LEAST", toLocalize("At least (recommended)")},
               {VersionComparisonMethod::equalTo, "EQUAL_TO", toLocalize("Exact match")}});
CORVANE_CASES(CRVNotificationType, {{CRVNotificationType::updatesAvailable, "updatesAvailable", ""},
                                    {CRVNotificationType::acPowerRequired, "acPowerRequired", ""},
                                    {CRVNotificationType::deferralResuming, "deferralResuming", ""},
                                    {CRVNotificationType::hardDeadlineReminder, "hardDeadlineReminder", ""},
                                    {CRVNotificationType::selfUpdateAvailable, "selfUpdateAvailable", ""},
                                    {CRVNotificationType::backgroundPatchStarted, "backgroundPatchStarted", ""},
                                    {CRVNotificationType::backgroundPatchCompleted, "backgroundPatchCompleted", ""},
                                    {CRVNotificationType::backgroundPatchFailed, "backgroundPatchFailed", ""}});
CORVANE_CASES(CRVNotificationPresentation, {{CRVNotificationPresentation::banner, "banner", ""},
                                            {CRVNotificationPresentation::persistent, "persistent", ""}});
#undef CORVANE_CASES

template <class E>
[[nodiscard]] constexpr std::string_view rawName(E value) {
  for (const auto& entry : CaseNames<E>::all)
    if (entry.value == value) return entry.raw;
  return {};
}

template <class E>
[[nodiscard]] constexpr std::string_view displayText(E value) {
  for (const auto& entry : CaseNames<E>::all)
    if (entry.value == value) return entry.display;
  return {};
}

// Reading ignores case; absent for an unknown raw string.
template <class E>
[[nodiscard]] std::optional<E> caseFromRaw(std::string_view raw) {
  for (const auto& entry : CaseNames<E>::all)
    if (equalIgnoringCase(entry.raw, raw)) return entry.value;
  return std::nullopt;
}

}  // namespace corvane
