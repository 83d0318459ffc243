// Explanations say what the predicates decide, name the setting behind it, and tell what comes next.
#include "workflow/explanation.h"

#include "core/discovery/app_discovery_service.h"
#include "support/app_facts_setup.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

using testing::configure;
using Rule = ExplainedRule;
using Verdict = ExplainedVerdict;

struct ExplanationTest : WorkflowTest {
  // The facts of these applications as the stores and the machine have them now.
  [[nodiscard]] ExplanationFacts taken() const {
    return explanationFacts(*model, services, [](Date date) { return "at " + iso8601Utc(date); });
  }
  [[nodiscard]] Explanation of(const char* name) const {
    return explain(*appWith(model->fields().inventory.apps, Label(name)), taken());
  }
};

const ExplanationStep* stepOf(const Explanation& explanation, Rule rule) {
  const auto found = std::ranges::find(explanation.steps, rule, &ExplanationStep::rule);
  return found == explanation.steps.end() ? nullptr : &*found;
}

// Every kind of application, and every state around it that the predicates look at.
Apps everyKindOfQuill() {
  Apps kinds;
  for (const char* installed : {static_cast<const char*>(nullptr), "1.0", "2.0"}) {
    for (const char* latest : {static_cast<const char*>(nullptr), "2.0"}) {
      for (int bits = 0; bits < 8; ++bits) {
        auto app = makeApp({.label = "quill", .installed = installed, .latest = latest});
        app.updateCheckFailed = (bits & 1) != 0;
        app.teamIDMismatch = (bits & 2) != 0;
        app.macAppStoreManaged = (bits & 4) != 0;
        kinds.push_back(app);
      }
    }
  }
  return kinds;
}

AppFacts factsOf(unsigned bits) {
  const Label quill("quill");
  AppFacts facts;
  facts.hasAppStoreReceipt = [](const AppInfo&) { return false; };
  facts.cycleStart = Date(1h);
  facts.cycleComplete = (bits & 1U) != 0;
  facts.replacesAppStoreApps = (bits & 2U) != 0;
  if ((bits & 4U) != 0) {
    facts.failures[quill] = {
        .count = 3, .targetVersion = "2.0", .lastFailureAt = Date(5h), .holdingFailureAt = Date(4h)};
    facts.failureTargets[quill] = "2.0";
  }
  if ((bits & 8U) != 0) facts.clearedLabels.insert(quill);
  facts.reinstallsCurrentRequiredApps = (bits & 64U) != 0;
  configure(facts, [&](auto& config) {
    if ((bits & 16U) != 0) config.requiredLabels = {"qu*"};
    if ((bits & 32U) != 0) config.ignoredLabels = {"q?ill"};
    if ((bits & 64U) != 0) config.installomatorOptions = "INSTALL=force";
  });
  return facts;
}

TEST_F(ExplanationTest, TheVerdictIsThatOfThePredicatesForEveryKindOfApplication) {
  build();
  auto facts = taken();
  std::map<Verdict, int> seen;
  for (unsigned bits = 0; bits < 128; ++bits) {
    facts.apps = factsOf(bits);
    for (const auto& app : everyKindOfQuill()) {
      const auto explanation = explain(app, facts);
      const auto text = fmt::format("{}: {}", bits, writeJson(toJson(app))) + "\n" + explanationText(explanation);
      ASSERT_TRUE(explanation.verdict) << text;
      const auto verdict = *explanation.verdict;
      ++seen[verdict];
      const bool dropped = AppDiscoveryService::droppingIgnoredApps({app}, facts.apps.config).empty();
      EXPECT_EQ(verdict == Verdict::ignored, dropped || app.teamIDMismatch || isExcludedAppStoreApp(app, facts.apps))
          << text;
      const auto ended = std::ranges::count_if(explanation.steps, &ExplanationStep::decides);
      EXPECT_EQ(ended, verdict == Verdict::pending ? 0 : 1) << text;
      if (verdict == Verdict::ignored) continue;

      const auto counts = deriveCounts({app}, facts.apps);
      const bool prompted =
          !facts.apps.cycleComplete && isPending(app, facts.apps) && !isHeldBack(app.label, facts.apps);
      EXPECT_EQ(verdict == Verdict::pending, prompted) << text;
      EXPECT_EQ(verdict == Verdict::pending, counts.pendingUpdates == 1) << text;
      EXPECT_EQ(verdict == Verdict::upToDate, isUpToDate(app, facts.apps)) << text;
      EXPECT_EQ(verdict == Verdict::held, isPending(app, facts.apps) && heldFailureRecord(app.label, facts.apps))
          << text;
      const bool later = verdict == Verdict::held || verdict == Verdict::waiting;
      EXPECT_TRUE(later || counts.updatesAwaitingNextCycle == 0) << text;
      EXPECT_TRUE(verdict == Verdict::waiting || !app.updateCheckFailed) << text;
    }
  }
  EXPECT_EQ(seen.size(), CaseNames<Verdict>::all.size());
}

TEST_F(ExplanationTest, EachStepNamesItsSettingAndWhoDecides) {
  manage({{"RequiredLabels", PlistValue("qu*")}});
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"quill", "tern"});
  buildWith({outdated("quill")});
  const auto quill = of("quill");
  EXPECT_EQ(quill.verdict, Verdict::pending);
  const auto* ignored = stepOf(quill, Rule::ignored);
  ASSERT_NE(ignored, nullptr);
  EXPECT_FALSE(ignored->holds);
  EXPECT_EQ(ignored->detail, "\"quill\" fits the label, but it is required or optional too.");
  EXPECT_EQ(ignored->source, ValueSource::user);
  const auto* required = stepOf(quill, Rule::required);
  ASSERT_NE(required, nullptr);
  EXPECT_TRUE(required->holds);
  EXPECT_EQ(required->key, "RequiredLabels");
  EXPECT_EQ(required->source, ValueSource::managed);

  // Nothing is listed under what the settings leave out, and it can be told all the same; of the rest nothing can.
  const auto tern = explainUnlisted(Label("tern"), taken());
  ASSERT_TRUE(tern);
  EXPECT_EQ(tern->verdict, Verdict::ignored);
  EXPECT_EQ(tern->steps.back().detail, "\"tern\" fits the label.");
  EXPECT_FALSE(explainUnlisted(Label("swift"), taken()));
}

TEST_F(ExplanationTest, WhatIsArmedDecidesWhyThereIsNoPromptAndWhatComesNext) {
  buildWith({outdated("quill")});
  const auto armed = time.now() + 2h;
  preferences.writeNextAutoLaunch(armed, false, false);
  auto facts = taken();
  facts.pending.openLabels = {label("quill")};
  facts.pending.closedLabels.clear();
  const auto& app = model->fields().inventory.apps.front();
  EXPECT_EQ(explain(app, facts).next, "The question comes back at " + iso8601Utc(armed) + ".");
  EXPECT_EQ(explain(app, facts).nextAt, armed);

  preferences.writeNextAutoLaunch(armed, true, false);
  EXPECT_EQ(explainAll(taken()).prompt, "No prompt before at " + iso8601Utc(armed) + ": nobody was to be disturbed.");

  // A deadline that came since the model last looked turns what is armed into the forced install.
  manage({{"DeadlineCountHard", PlistValue(std::int64_t(0))}});
  facts = taken();
  ASSERT_TRUE(facts.armed);
  EXPECT_TRUE(std::holds_alternative<watchpoint::Enforcement>(*facts.armed));
  const auto all = explainAll(facts);
  const auto* deadline = stepOf(all, Rule::deadline);
  EXPECT_TRUE(deadline->holds);
  EXPECT_EQ(deadline->detail, "You have used every deferral.");
  EXPECT_EQ(deadline->key, "DeadlineCountHard");
  EXPECT_EQ(deadline->source, ValueSource::managed);
  facts.helperOperational = false;
  const auto without = explainAll(facts);
  EXPECT_FALSE(stepOf(without, Rule::helper)->holds);
  EXPECT_EQ(stepOf(without, Rule::helper)->detail, "The root helper is not running.");
}

TEST_F(ExplanationTest, ASilentUpdateNamesWhatStandsInItsWay) {
  buildWith({outdated("quill")});
  auto facts = taken();
  facts.pending.pending = {label("quill")};
  facts.pending.closedLabels = {label("quill")};
  facts.pending.openLabels.clear();
  const auto& app = model->fields().inventory.apps.front();
  const auto obstacle = [&](auto change) {
    auto changed = facts;
    configure(changed.apps, [](auto& config) { config.backgroundPatchClosedAppsEnabled = true; });
    change(changed);
    const auto explanation = explain(app, changed);
    const auto* silent = stepOf(explanation, Rule::patchedSilently);
    EXPECT_EQ(silent->holds, silent->detail.empty());
    return silent->detail + "|" + silent->key;
  };
  const auto config = [&](auto change) { return [=](ExplanationFacts& changed) { configure(changed.apps, change); }; };
  EXPECT_EQ(obstacle([](auto&) {}), "|");
  EXPECT_EQ(obstacle(config([](auto& c) { c.backgroundPatchClosedAppsEnabled = false; })),
            "The background pass is off.|BackgroundPatchClosedAppsEnabled");
  EXPECT_EQ(obstacle(config([](auto& c) { c.backgroundPatchClosedAppsBlockList = {"quill"}; })),
            "It is on the block list.|BackgroundPatchClosedAppsBlockList");
  EXPECT_EQ(obstacle(config([](auto& c) { c.backgroundPatchClosedAppsAllowList = {"tern"}; })),
            "It is not on the allow list.|BackgroundPatchClosedAppsAllowList");
  EXPECT_EQ(obstacle([](auto& changed) {
              configure(changed.apps, [](auto& c) { c.backgroundPatchClosedAppsRequireOnAC = true; });
              changed.onACPower = false;
            }),
            "It waits for the power adapter.|BackgroundPatchClosedAppsRequireOnAC");
  EXPECT_EQ(obstacle([](auto& changed) { changed.helperOperational = false; }), "The root helper is not running.|");
  EXPECT_EQ(obstacle([](auto& changed) {
              changed.pending.openLabels = {label("quill")};
              changed.pending.closedLabels.clear();
            }),
            "It is open.|");
}

}  // namespace
}  // namespace corvane
