// `corvanectl explain` over a scripted machine.
#include "ctl/session_fixture.h"

namespace corvane {
namespace {

TEST_F(CtlSession, ExplainNamesVerdictRuleKeyAndSourceAndWritesNothing) {
  manage({{"IgnoredLabels", PlistValue("ter*")}});
  know({outdated("quill"), failedCheck("swift")});
  const auto before = *domains.user().values;
  EXPECT_EQ(run({.verb = Verb::explain, .labels = {label("quill"), label("swift"), label("tern")}}), ExitCode::done);
  EXPECT_TRUE(out.starts_with("The quill (quill): Pending\nVersion 2.0 is newer than the installed one.\n\n")) << out;
  EXPECT_NE(out.find("  no   Required [RequiredLabels, default]\n"), std::string::npos) << out;
  EXPECT_NE(out.find("\n\nThe swift (swift): Waiting\n"), std::string::npos) << out;
  EXPECT_NE(out.find("\n\ntern: Ignored\nThe settings leave this label out.\n\n"
                     "  yes  Ignored by the settings: \"ter*\" fits the label. [IgnoredLabels, managed]\n"),
            std::string::npos)
      << out;

  EXPECT_EQ(runJson(Verb::explain, {label("tern")}), ExitCode::done);
  const auto told = field("explanations").array()->at(0);
  EXPECT_EQ(told.find("verdict")->string(), "ignored");
  const auto& step = told.find("steps")->array()->at(0);
  EXPECT_EQ(step.find("key")->string(), "IgnoredLabels");
  EXPECT_EQ(step.find("source")->string(), "managed");
  EXPECT_EQ(*step.find("decides"), JsonValue(true));
  EXPECT_EQ(*domains.user().values, before);
  EXPECT_EQ(helper.discoveriesAsked + registration.kickstarts, 0);
}

TEST_F(CtlSession, ExplainFailsForAnUnknownLabelAndTellsTheOthersAllTheSame) {
  know({outdated("quill")});
  EXPECT_EQ(run({.verb = Verb::explain, .labels = {label("heron")}}), ExitCode::failed);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(
      err,
      "corvanectl: No application is known under heron. `corvanectl list` shows the labels, `corvanectl discover` "
      "looks for applications.\n");
  EXPECT_EQ(runJson(Verb::explain, {label("heron"), label("quill")}), ExitCode::failed);
  EXPECT_EQ(field("explanations").array()->size(), 1U);
  EXPECT_TRUE(errorText().starts_with("No application is known under heron."));
}

TEST_F(CtlSession, ExplainWithoutALabelTellsOfTheWholeWithItsMoments) {
  know({outdated("quill")});
  preferences.writeNextAutoLaunch(time.now() + 2h, false, false);
  EXPECT_EQ(run({.verb = Verb::explain}), ExitCode::done);
  EXPECT_TRUE(out.starts_with("  yes  Updates pending: ")) << out;
  EXPECT_NE(out.find(", in 2 hours"), std::string::npos) << out;
  EXPECT_EQ(runJson(Verb::explain), ExitCode::done);
  EXPECT_EQ(field("nextAt").string(), iso8601Utc(time.now() + 2h));
  EXPECT_TRUE(field("verdict").isNull());
}

}  // namespace
}  // namespace corvane
