#include "pictures/page_states.h"

#include <fmt/format.h>

#include <utility>

#include "presentation/page_texts.h"
#include "workflow/app_predicates.h"
#include "workflow/status_texts.h"

namespace corvane {
namespace {

constexpr Date kNow = PageState::kNow;

AppInfo app(std::string label, std::string name, std::optional<std::string> installed,
            std::optional<std::string> latest) {
  return {.label = Label(std::move(label)),
          .name = name,
          .appName = name + ".app",
          .currentVersion = std::move(installed),
          .newVersion = std::move(latest),
          .appPath = "/Applications/" + name + ".app"};
}

std::vector<PatchingReceipt> failures(const Label& label, int count, const std::string& target) {
  std::vector<PatchingReceipt> receipts;
  for (int i = 0; i < count; ++i)
    receipts.push_back({.label = label,
                        .timestamp = kNow - 2h - std::chrono::hours(26 * i),
                        .status = PatchingStatus::failure,
                        .version = "1.0",
                        .targetVersion = target,
                        .installomatorExitCode = 2});
  return receipts;
}

void addFailures(PageState& state, const Label& label, int count, const std::string& target) {
  const auto receipts = failures(label, count, target);
  for (auto& [name, record] : LabelFailureHistory::failureRecords(receipts)) state.facts.failures[name] = record;
  state.facts.failureTargets[label] = target;
  auto latest = state.facts.latestReceipts ? *state.facts.latestReceipts : LatestReceipts();
  latest[label] = receipts.front();
  state.facts.latestReceipts = std::make_shared<LatestReceipts>(std::move(latest));
}

void count(PageState& state) {
  auto& inventory = state.fields.inventory;
  const ScriptedLocale locale;
  const auto passing = [&](FilterMode mode) {
    return static_cast<std::int64_t>(filteredApps(inventory.apps, mode, state.facts, locale).size());
  };
  inventory.pendingUpdates = passing(FilterMode::needsUpdate);
  inventory.upToDateCount = passing(FilterMode::upToDate);
  inventory.alertCount = passing(FilterMode::alerts);
  state.listed = filteredApps(inventory.apps, state.fields.filterMode, state.facts, locale);
  state.statusLine = statusLine(state.fields, kNow);
  state.statusSymbol = std::string(statusSymbolName(state.fields, kNow));
}

PageState bare(std::string name) {
  PageState state{.name = std::move(name)};
  state.facts.hasAppStoreReceipt = [](const AppInfo& one) { return one.macAppStoreManaged; };
  state.fields.helper = {.helperOperational = true, .installomatorAvailable = true, .firstRunSetupCompleted = true};
  return state;
}

PageState scanned(std::string name) {
  auto state = bare(std::move(name));
  state.fields.inventory.lastDiscoveryDate = kNow - 5min;
  state.fields.inventory.lastUpdateCheckDate = kNow - 4min;
  return state;
}

PageState ordinary(std::string name) {
  auto state = ordinaryState();
  state.name = std::move(name);
  return state;
}

ExplanationFacts whyFacts(const PageState& state) {
  ExplanationFacts facts{.apps = state.facts, .now = PageState::kNow, .armed = state.watchpoint};
  for (const auto& one : state.fields.inventory.apps) {
    if (!isPending(one, state.facts) || isHeldBack(one.label, state.facts)) continue;
    facts.pending.pending.push_back(one.label);
    facts.pending.openLabels.insert(one.label);
  }
  facts.helperOperational = facts.installomatorAvailable = true;
  facts.cycle = {.currentPatchingStartDate = kNow - 50h, .nextCycleStartDate = kNow + 118h};
  facts.lastUpdateCheck = state.fields.inventory.lastUpdateCheckDate;
  facts.sourceOf = [](std::string_view key) {
    return key == "RequiredLabels" ? ValueSource::managed : ValueSource::fallback;
  };
  facts.moment = [](Date date) { return momentText(date, kNow, ScriptedLocale()); };
  return facts;
}

PageState why() {
  auto state = ordinary("why");
  state.watchpoint = watchpoint::DeferralReminder{kNow + 2h};
  state.explained = {Label("bramble")};
  std::erase_if(state.listed, [](const AppInfo& one) { return one.label.text > "bramble"; });
  state.height = 900;
  return state;
}

// The wizard, as it looks from the first start on.
PageState setup(std::string name, HelperStatus status, bool operational, std::optional<Duration> waiting) {
  auto state = bare(std::move(name));
  state.helperStatus = status;
  state.fields.helper = {.helperOperational = operational};
  if (waiting) state.step2Since = kNow - *waiting;
  return state;
}

PageState setupReady(std::string name) {
  auto state = setup(std::move(name), HelperStatus::enabled, true, std::nullopt);
  state.fields.helper.installomatorAvailable = true;
  return state;
}

PageState setupDone() {
  auto state = ordinary("setup-done");
  state.fields.helper.firstRunSetupCompleted = false;
  return state;
}

PageState expanded() {
  auto state = ordinary("expanded");
  const Label label("harbor");
  auto receipts = failures(label, 2, "5.2");
  receipts.push_back({.label = label,
                      .timestamp = kNow - 240h,
                      .status = PatchingStatus::success,
                      .version = "5.1",
                      .targetVersion = "5.1"});
  receipts.push_back({.label = label,
                      .timestamp = kNow - 500h,
                      .status = PatchingStatus::skipped,
                      .version = "5.0",
                      .installomatorExitCode = 10});
  std::vector<DeferralEventRecord> events;
  for (const auto type : {DeferralEventType::installationStarted, DeferralEventType::deadlineForced,
                          DeferralEventType::focusSuppressed, DeferralEventType::userDeferred})
    events.push_back({.label = label,
                      .appName = "Harbor",
                      .eventType = type,
                      .timestamp = kNow - 3h - std::chrono::hours(events.size())});
  state.expanded[label] = {.receipts = std::move(receipts), .events = std::move(events)};
  state.expanded[Label("atlas")] = {};
  std::erase_if(state.listed, [&](const AppInfo& one) { return one.label != label && one.label != Label("atlas"); });
  return state;
}

PageState completed() {
  auto state = ordinary("cycle-complete");
  state.fields.inventory.cycleCompletionMessage =
      "Patching is complete for this cycle. The next cycle starts November 9, 2026.";
  state.facts.cycleComplete = true;
  count(state);
  state.fields.inventory.updatesAwaitingNextCycle = std::exchange(state.fields.inventory.pendingUpdates, 0);
  state.statusLine = statusLine(state.fields, kNow);
  state.statusSymbol = std::string(statusSymbolName(state.fields, kNow));
  return state;
}

PageState banner(std::string name, HelperStatus status, bool installomator) {
  auto state = ordinary(std::move(name));
  state.helperStatus = status;
  state.fields.helper.helperOperational = false;
  state.fields.helper.installomatorAvailable = installomator;
  count(state);
  return state;
}

PageState installomatorMissing() {
  auto state = banner("installomator-missing", HelperStatus::enabled, false);
  state.fields.helper.helperOperational = true;
  return state;
}

PageState thousand() {
  auto state = scanned("thousand-rows");
  for (int i = 0; i < 1000; ++i)
    state.fields.inventory.apps.push_back(
        app(fmt::format("app{:04}", i), fmt::format("Application {}", i), "1.0", i % 3 == 0 ? "1.1" : "1.0"));
  count(state);
  return state;
}

}  // namespace

FirstRunSetupPage PageState::setupPage() const {
  const ScriptedLocale locale;
  return makeFirstRunSetupPage({.fields = fields,
                                .locale = locale,
                                .now = kNow,
                                .title = AppDisplayTitle(std::string_view("Corvane")),
                                .helperStatus = helperStatus,
                                .step2InProgressSince = step2Since,
                                .revealsLog = true});
}

DashboardPage PageState::page() const {
  const ScriptedLocale locale;
  std::map<Label, Explanation> told;
  for (const auto& label : explained)
    if (const auto* one = appWith(fields.inventory.apps, label)) told.emplace(label, explain(*one, whyFacts(*this)));
  return makeDashboardPage({.fields = fields,
                            .facts = facts,
                            .listed = listed,
                            .locale = locale,
                            .now = kNow,
                            .title = AppDisplayTitle(std::string_view("Corvane")),
                            .helperStatus = helperStatus,
                            .statusLine = statusLine,
                            .statusSymbol = statusSymbol,
                            .watchpoint = watchpoint,
                            .expanded = expanded,
                            .selfUpdateDismissed = selfUpdateDismissed,
                            .capabilities = capabilities,
                            .explained = std::move(told)});
}

AppInfo outdatedApp(std::string label, std::string name) {
  return app(std::move(label), std::move(name), "1.0", "2.0");
}

PageState ordinaryState() {
  auto state = scanned("ordinary");
  auto& apps = state.fields.inventory.apps;
  apps = {app("atlas", "Atlas", "3.2.1", "3.2.1"),
          app("bramble", "Bramble", "1.10", "1.11"),
          app("cedar", "Cedar Mail", "2024.3 (build 7)", std::nullopt),
          app("dune", "Dune Player", "0.9", "0.10"),
          app("ember", "Ember", "7.0", "7.0"),
          app("fern", "Fern Notes", "4.4", "4.4"),
          app("harbor", "Harbor", "5.1", "5.2"),
          app("juniper", "Juniper VPN", std::nullopt, "8.1"),
          app("lantern", "A Lantern Whose Name Is So Long That It Cannot Possibly Fit Into One Line of Any Window",
              "10.2.3.4567-beta.12+build.20261101", "10.2.3.4568"),
          app("quill", "Quill", "2.3.1", "2.4"),
          app("radio", "Übersee Radio", "1.0", "1.0"),
          app("note", "青い鳥ノート", "6.1", "6.2")};
  apps[2].updateCheckFailed = true;
  apps[2].updateCheckFailureReason = "The vendor's page answered 503.";
  apps[4].macAppStoreManaged = true;
  apps[5].teamIDMismatch = true;
  apps[5].expectedTeamID = "ABCDE12345";
  apps[5].bundleTeamID = "ZYXWV98765";
  apps[7].appName.reset();
  apps[7].appPath.reset();
  addFailures(state, Label("dune"), 3, "0.10");
  addFailures(state, Label("harbor"), 1, "5.2");
  state.fields.deferral.currentHardDeadlineDate = kNow + 100h;
  count(state);
  return state;
}

std::vector<PageState> allPageStates() {
  using enum DiscoveryOperation;
  std::vector<PageState> states{bare("never-scanned"), scanned("empty-after-scan")};
  const auto add = [&](PageState state, const auto& edit) {
    edit(state.fields, state);
    count(state);
    states.push_back(std::move(state));
  };
  add(bare("discovering-first"), [](auto& fields, auto&) {
    fields.gate = {.isLoading = true, .currentOperation = discoverInstalled};
    fields.messages.statusMessage = startText(discoverInstalled, 0);
  });
  add(ordinary("checking"), [](auto& fields, auto&) {
    fields.gate = {.isLoading = true, .currentOperation = checkUpdates};
    fields.discovery.updateCheckCoversAllApps = true;
    fields.messages.statusMessage = startText(checkUpdates, 12);
  });
  states.push_back(ordinary("ordinary"));
  add(ordinary("patching-one"), [](auto& fields, auto&) {
    const Label label("bramble");
    fields.gate = {.isPatching = true, .currentOperation = patchSingle};
    fields.patch.progress =
        PatchProgress{.operation = patchSingle, .labels = {label}, .currentLabel = label, .total = 1};
    fields.messages.statusMessage = "Updating Bramble (1 of 1)…";
  });
  states.push_back(expanded());
  states.push_back(completed());
  states.push_back(banner("helper-not-registered", HelperStatus::notRegistered, true));
  states.push_back(banner("helper-requires-approval", HelperStatus::requiresApproval, true));
  states.push_back(banner("helper-not-found", HelperStatus::notFound, true));
  states.push_back(banner("helper-not-operational", HelperStatus::enabled, false));
  states.push_back(installomatorMissing());
  add(ordinary("self-update"), [](auto& fields, auto& state) {
    fields.selfUpdate.selfUpdateAvailable =
        SelfUpdateAvailability{.label = Label("corvane4"), .availableVersion = "4.1", .runningVersion = "4.0"};
    state.capabilities = {.updatesItself = true};
  });
  const auto enforced = [](auto& fields, auto& state) {
    fields.deferral.currentHardDeadlineDate = kNow - 1h;
    fields.deferral.currentDeferralEscalation = DeferralEscalation::hard;
    state.watchpoint = watchpoint::Enforcement{kNow + 21h};
  };
  add(ordinary("deadlines"), enforced);
  add(ordinary("deferred"),
      [](auto&, auto& state) { state.watchpoint = watchpoint::DeferralReminder{kNow + 1h + 58min + 20s}; });
  add(ordinary("focus-deferred"),
      [](auto&, auto& state) { state.watchpoint = watchpoint::FocusDeferral{kNow + 29min}; });
  add(ordinary("error"), [](auto& fields, auto&) {
    fields.messages.errorMessage =
        "Reset Helper failed: the helper does not end (process 4711) (domain: CRVHelperRegistration, code: 110)";
  });
  add(ordinary("filter-alerts"), [](auto& fields, auto&) { fields.filterMode = FilterMode::alerts; });
  add(scanned("filter-empty"), [](auto& fields, auto&) {
    fields.inventory.apps = {app("quill", "Quill", "2.0", "2.0")};
    fields.filterMode = FilterMode::needsUpdate;
  });
  states.push_back(why());
  states.push_back(setup("setup-register", HelperStatus::notRegistered, false, std::nullopt));
  states.push_back(setup("setup-approve", HelperStatus::requiresApproval, false, std::nullopt));
  states.push_back(setup("setup-starting", HelperStatus::enabled, false, std::nullopt));
  states.push_back(setup("setup-downloading", HelperStatus::enabled, true, 10s));
  states.push_back(setup("setup-still-downloading", HelperStatus::enabled, true, 45s));
  states.push_back(setup("setup-slow", HelperStatus::enabled, true, 150s));
  states.push_back(setupReady("setup-discover"));
  add(setupReady("setup-scanning"),
      [](auto& fields, auto&) { fields.gate = {.isLoading = true, .currentOperation = discoverInstalled}; });
  states.push_back(setupDone());
  states.push_back(thousand());
  const auto addSized = [&](PageState state, int width, int height) {
    state.width = width;
    state.height = height;
    states.push_back(std::move(state));
  };
  addSized(ordinary("small"), 640, 480);
  add(ordinary("small-deadlines"), enforced);
  states.back().width = 640;
  states.back().height = 480;
  addSized(banner("small-banner", HelperStatus::notRegistered, false), 640, 480);
  addSized(ordinary("wide"), 1920, 1080);
  addSized(ordinary("large-text"), 1080, 800);
  states.back().textScale = 1.5;
  for (std::size_t i = 0, light = states.size(); i < light; ++i) {
    states.push_back(states[i]);
    states.back().dark = true;
    states.back().name += "-dark";
  }
  for (auto& state : states)
    if (state.statusLine.empty()) count(state);
  return states;
}

}  // namespace corvane
