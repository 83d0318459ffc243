#include "simulation/simulated_mac.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "workflow/deferral_texts.h"

namespace corvane {

namespace {

std::string applications(std::size_t count) {
  return count == 1 ? "1 application" : fmt::format("{} applications", count);
}

// "2026-10-26 09:00"; ends the program at anything else.
Date momentOf(std::string_view local, const Calendar& calendar) {
  const auto number = [&](std::size_t from, std::size_t digits) {
    int value = -1;
    const auto text = local.size() == 16 ? local.substr(from, digits) : std::string_view();
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size()) return value;
    fmt::print(stderr, "no moment: {}\n", local);
    std::abort();
  };
  const std::chrono::year_month_day day{std::chrono::year(number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(8, 2)))};
  return calendar.at(day, std::chrono::hours(number(11, 2)) + std::chrono::minutes(number(14, 2)));
}

}  // namespace

SimulatedMac::SimulatedMac(const SimulatedMacPlan& plan)
    : locale_(plan.zone),
      time_(momentOf(plan.start, locale_.calendar())),
      services_{.main = time_.main(),
                .work = time_.work(),
                .clock = time_.clock(),
                .locale = locale_,
                .entropy = entropy_,
                .notifications = notifications_,
                .log = log_,
                .files = files_,
                .processes = processes_,
                .application = application_,
                .focus = focus_,
                .power = power_,
                .places = places_,
                .preferences = preferences_,
                .helper = helper_,
                .installation = installation_,
                .helperState = helperState_,
                .scheduledApps = scheduledApps_,
                .receipts = receipts_,
                .deferralEvents = deferralEvents_,
                .failures = failures_,
                .installs = installs_,
                .latestReceipts = latestReceipts_,
                .installFacts = installFacts_,
                .prompts = panel_,
                .notices = notices_,
                .signals = neutral_.signals,
                .selfUpdateDisplay = neutral_.selfUpdateDisplay},
      dailyCheck_(plan.dailyCheck) {
  log_.keeps = plan.keepsLog;
  store(plan);
  helper_.onRun = [this](const Labels& labels, int others) { runStarted(labels, others); };
  helper_.onRunEnded = [this](const Labels& installed, const Labels& failed) { runEnded(installed, failed); };
  notices_.delivered = [this] { time_.main().post([this] { deliver(); }); };
  settingsWatch_ = preferences_.startWatching();
  model_ = std::make_unique<StatusViewModel>(services_);
  changes_ = model_->observe([this] { noticed(); });
  prompt_ = std::make_unique<DeferralPromptController>(*model_, services_);
  watcher_ = std::make_unique<DeferralWatcher>(*model_, services_);
  person_ = std::make_unique<Person>(*model_, services_, *prompt_, diary_);
  person_->habits = plan.habits;
  hardCount_ = preferences_.readDeferralInfo().hardDeferralCount;
  cycle_ = preferences_.readPatchingCadenceState();
  model_->begin();
  model_->loadStatus();
  watcher_->start();
  planDailyCheck();
  time_.runUntilIdle();
}

void SimulatedMac::store(const SimulatedMacPlan& plan) {
  files_.put(places_.installomatorScript(), "#!/bin/zsh\n");
  (void)files_.makeFolders(places_.deferralEventsFolder());
  domains_.setManaged(plan.settings);
  domains_.setUser(plan.state);
  helper_.apps = plan.apps;
  preferences_.writeDiscoveredApps(helper_.check({}, false));
  preferences_.writePreference("LastDiscoveryDate", time_.now() - 24h);
}

Date SimulatedMac::at(std::string_view local) const { return momentOf(local, locale_.calendar()); }

void SimulatedMac::runUntil(Date date) { time_.advanceTo(date); }

void SimulatedMac::run(Duration by) { time_.advance(by); }

void SimulatedMac::sleepUntil(Date date) {
  time_.suspend(std::max(date - time_.now(), Duration::zero()));
  time_.runUntilIdle();
}

void SimulatedMac::set(const std::string& key, PlistValue value) {
  auto values = *domains_.managed().values;
  values.insert_or_assign(key, std::move(value));
  domains_.setManaged(std::move(values));
}

void SimulatedMac::unset(const std::string& key) {
  auto values = *domains_.managed().values;
  values.erase(key);
  domains_.setManaged(std::move(values));
}

void SimulatedMac::release(std::string_view label, std::string version) {
  const auto app = std::ranges::find(helper_.apps, label, &SimulatedApp::label);
  if (app != helper_.apps.end()) app->latest = std::move(version);
}

void SimulatedMac::planDailyCheck() {
  const auto minutes = dailyCheck_ ? BusinessHoursGate::parseMinutesOfDay(*dailyCheck_) : std::nullopt;
  if (!minutes) return;
  const auto calendar = locale_.calendar();
  std::chrono::sys_days day = calendar.local(time_.now()).day;
  if (calendar.at(day, std::chrono::minutes(*minutes)) <= time_.now()) day += std::chrono::days(1);
  nextCheck_ = time_.main().at(calendar.at(day, std::chrono::minutes(*minutes)), [this] {
    if (model_->isIdle()) model_->checkForUpdates();
    planDailyCheck();
  });
}

// No application of this Mac is ever open, so it is asked about closed ones: whoever has updates and nothing armed.
void SimulatedMac::deliver() {
  if (!model_ || !model_->isIdle()) return;
  const auto& fields = model_->fields();
  if (fields.inventory.pendingUpdates == 0 || fields.inventory.cycleCompletionMessage ||
      fields.deferral.showDeferralPrompt || preferences_.readNextAutoLaunch())
    return;
  model_->updateAll(DeferralPromptHost::standalone);
}

void SimulatedMac::noticed() {
  if (const auto version = domains_.user().version; version != storedVersion_) {
    storedVersion_ = version;
    noticedCycle();
    noticedDeferral();
  }
  noticedPrompt();
}

void SimulatedMac::noticedPrompt() {
  const auto& deferral = model_->fields().deferral;
  if (!deferral.showDeferralPrompt || deferral.deferralPromptGeneration == askedGeneration_) return;
  askedGeneration_ = deferral.deferralPromptGeneration;
  const auto count = model_->deferralPromptApps().size();
  if (count == 0) broken("a prompt with nothing in it");
  if (deferral.currentDeferralEscalation != DeferralEscalation::hard)
    return diary_.write("asked: " + applications(count));
  const auto armed = preferences_.readNextAutoLaunch();
  const auto end = businessHours().nextWindowEnd(time_.now());
  if (!isWithinBusinessHours() || (armed && *armed > time_.now() && end && *armed < *end)) mayInterrupt_ = true;
  if (!armed || *armed <= time_.now()) return broken("a required update with nothing armed");
  diary_.write(fmt::format("required: {} by {}", applications(count), diaryTime(*armed, locale_.calendar())));
}

void SimulatedMac::noticedDeferral() {
  const auto count = preferences_.readDeferralInfo().hardDeferralCount;
  const auto before = std::exchange(hardCount_, count);
  if (count <= before) return;
  const auto limit = preferences_.loadConfiguration()->deadlineCountHard;
  if (limit && count > std::max<std::int64_t>(*limit, 0)) broken("a deferral beyond the limit");
  const auto length = deferralDurationText(model_->fields().deferral.selectedDeferralMinutes, locale_);
  diary_.write(
      fmt::format("{} {}", person_->pressedDefer() ? "deferred for" : "nobody answered: deferred for", length));
}

void SimulatedMac::noticedCycle() {
  const auto state = preferences_.readPatchingCadenceState();
  const auto before = std::exchange(cycle_, state);
  if (before.currentPatchingStartDate && state.currentPatchingStartDate != before.currentPatchingStartDate)
    diary_.write("a new cycle");
  if (state.lastPatchingCompletionDate && state.lastPatchingCompletionDate != before.lastPatchingCompletionDate) {
    diary_.write("the cycle is complete");
    mayInterrupt_ = false;
  }
}

void SimulatedMac::runStarted(const Labels& labels, int others) {
  if (others > 0) broken("two runs at once");
  const bool asked = person_->saidInstall();
  const bool hard = model_->fields().deferral.currentDeferralEscalation == DeferralEscalation::hard;
  diary_.write((asked ? "installing: " : hard ? "forced: " : "nobody answered, installing: ") + joined(labels));
  if (asked || !hard) return;
  if (const auto armed = preferences_.readNextAutoLaunch(); armed && *armed > time_.now())
    broken("a forced install before its moment");
  if (isWithinBusinessHours() && !mayInterrupt_) broken("a forced install within business hours");
}

void SimulatedMac::runEnded(const Labels& installed, const Labels& failed) {
  if (!installed.empty()) diary_.write("installed " + joined(installed));
  if (!failed.empty()) diary_.write("failed: " + joined(failed));
}

void SimulatedMac::broken(std::string_view rule) {
  brokenRules_.push_back(fmt::format("{} {}", diaryTime(time_.now(), locale_.calendar()), rule));
}

BusinessHoursGate SimulatedMac::businessHours() const {
  const auto config = preferences_.loadConfiguration();
  return {config->businessHoursStartTime, config->businessHoursEndTime, locale_.calendar()};
}

bool SimulatedMac::isWithinBusinessHours() const { return businessHours().isWithinBusinessHours(time_.now()); }

}  // namespace corvane
