// What is printed, from values alone.
#include "ctl/report.h"
#include "ctl/text_width.h"

#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

using ctl::appsJson;
using ctl::appsText;
using ctl::stateWord;
using ctl::table;

TEST(Table, ColumnsStandUnderTheirHeadsWhateverTheScript) {
  EXPECT_EQ(table({{"LABEL", "NAME", "STATE"}, {"radio", "Übersee Radio", "ok"}, {"aoitori", "青い鳥ノート", "ok"}}),
            "LABEL    NAME           STATE\n"
            "radio    Übersee Radio  ok\n"
            "aoitori  青い鳥ノート   ok\n");
  EXPECT_EQ(table({}), "");
  EXPECT_EQ(table({{"A", "B"}, {"long", ""}}), "A     B\nlong  \n");
}

TEST(TextWidth, CountsTheCellsOfATerminal) {
  const std::pair<const char*, std::size_t> rows[] = {
      {"", 0},   {"Quill", 5}, {"Übersee", 7},  {"U\u0308bersee", 7}, {"青い鳥ノート", 12}, {"ﾉｰﾄ", 3},
      {"Ａ", 2}, {"📦 Box", 6}, {"a\u200db", 2}, {"한글", 4},          {"torn \xe9\x9d", 6}, {"\xff\xfe", 2}};
  for (const auto& [text, width] : rows) EXPECT_EQ(ctl::displayWidth(text), width) << text;
}

TEST(TextWidth, CutsBetweenCharactersAndNeverPastTheWidth) {
  using ctl::elided;
  EXPECT_EQ(elided("Quill", 5), "Quill");
  EXPECT_EQ(elided("Quill", 4), "Qui…");
  EXPECT_EQ(elided("青い鳥", 6), "青い鳥");
  EXPECT_EQ(elided("青い鳥", 5), "青い…");
  EXPECT_EQ(elided("青い鳥", 4), "青…");
  EXPECT_EQ(elided("U\u0308bersee", 2), "U\u0308…");
  EXPECT_EQ(elided("Quill", 1), "…");
  EXPECT_EQ(elided("Quill", 0), "");
}

struct Report : WorkflowTest {
  [[nodiscard]] AppFacts facts() {
    build();
    return model->facts();
  }
};

TEST_F(Report, EachStateHasItsWordAndTheWorstOneWins) {
  fail("failing", 1);
  fail("held", 3);
  const auto known = facts();
  auto mismatch = outdated("mismatch");
  mismatch.teamIDMismatch = true;
  mismatch.updateCheckFailed = true;
  auto unreachable = unchecked("unreachable");
  unreachable.updateCheckFailed = true;
  const std::pair<AppInfo, const char*> rows[] = {
      {mismatch, "teamIDMismatch"},       {unreachable, "checkFailed"},
      {outdated("held"), "held"},         {outdated("failing"), "lastUpdateFailed"},
      {outdated("quill"), "needsUpdate"}, {current("tern"), "upToDate"},
      {unchecked("fresh"), "unchecked"}};
  for (const auto& [app, word] : rows) EXPECT_EQ(stateWord(app, known), word);
}

TEST_F(Report, ApplicationsCarryTheirRecordTheirNameAndTheirState) {
  const auto known = facts();
  auto quill = outdated("quill");
  quill.appName = "Quill.app";
  quill.appPath = "/Applications/Quill.app";
  const auto json = appsJson({quill}, known);
  const auto& app = json.find("apps")->array()->front();
  EXPECT_EQ(*app.find("label"), JsonValue("quill"));
  EXPECT_EQ(*app.find("displayName"), JsonValue("Quill"));
  EXPECT_EQ(*app.find("newVersion"), JsonValue("2.0"));
  EXPECT_EQ(*app.find("state"), JsonValue("needsUpdate"));
  EXPECT_EQ(appsText({quill, unchecked("tern")}, known),
            "LABEL  NAME      INSTALLED  LATEST  STATE\n"
            "quill  Quill     1.0        2.0     needsUpdate\n"
            "tern   The tern  1.0        -       unchecked\n");
  quill.appName = "Quill, the Only Editor With a Name of This Length.app";
  EXPECT_EQ(appsText({quill, unchecked("tern")}, known, 58),
            "LABEL  NAME                 INSTALLED  LATEST  STATE\n"
            "quill  Quill, the Only Ed…  1.0        2.0     needsUpdate\n"
            "tern   The tern             1.0        -       unchecked\n");
  EXPECT_EQ(appsText({quill}, known, 20),
            "LABEL  NAME          INSTALLED  LATEST  STATE\n"
            "quill  Quill, the …  1.0        2.0     needsUpdate\n");
  EXPECT_EQ(appsText({quill}, known, 200), appsText({quill}, known));
  EXPECT_EQ(appsText({}, known), "No applications. `corvanectl discover` looks for them.\n");
}

TEST_F(Report, ReceiptsTellWhenWhatAndHowItEnded) {
  const PatchingReceipt receipt{.label = Label("quill"),
                                .timestamp = VirtualMachine::kStart,
                                .status = PatchingStatus::failure,
                                .targetVersion = "2.0",
                                .installomatorExitCode = 3};
  EXPECT_EQ(ctl::receiptsText({receipt}, Calendar::utc()),
            "TIME                       LABEL  STATUS   VERSION  WANTED  RESULT\n"
            "2026-11-01T12:00:00+00:00  quill  failure  -        2.0     Disk image damaged (3)\n");
  const auto json = ctl::receiptsJson({receipt});
  EXPECT_EQ(*json.find("receipts")->array()->front().find("installomatorExitCode"), JsonValue(3));
}

TEST_F(Report, SettingsShowValueAndSourceAndHideSecrets) {
  domains.setManaged({{"SupportTeamName", "Service Desk"}});
  domains.setUser({{"SupportTeamName", "Somebody"}, {"VerboseMode", true}, {"LastDiscoveryDate", time.now()}});
  std::string_view secret;
  for (const auto& setting : settings_rows::all)
    if (setting.neverLogged && setting.access != SettingAccess::state) secret = setting.key;
  ASSERT_FALSE(secret.empty());
  domains.setManaged({{"SupportTeamName", "Service Desk"}, {std::string(secret), "hush-hush"}});
  const auto settings = ctl::settingsJson(preferences);
  std::map<std::string, std::pair<JsonValue, std::string>> rows;
  for (const auto& row : *settings.find("settings")->array())
    rows[std::string(*row.find("key")->string())] = {*row.find("value"), std::string(*row.find("source")->string())};
  EXPECT_EQ(rows["SupportTeamName"], std::pair(JsonValue("Service Desk"), std::string("managed")));
  EXPECT_EQ(rows["VerboseMode"], std::pair(JsonValue(true), std::string("user")));
  EXPECT_EQ(rows["DebugMode"], std::pair(JsonValue(false), std::string("default")));
  EXPECT_EQ(rows[std::string(secret)].first, JsonValue("(hidden)"));
  EXPECT_EQ(rows["LastDiscoveryDate"].second, "user");
  EXPECT_EQ(rows.size(), settings_rows::all.size());
  EXPECT_EQ(ctl::settingsText(preferences).find("hush-hush"), std::string::npos);
}

TEST_F(Report, StatusTextLeavesOutWhatIsNotThere) {
  build();
  const ctl::StatusReport report{
      .fields = fields(), .statusLine = "No discovery yet", .helperStatus = HelperStatus::notRegistered};
  const auto text = ctl::statusText(report, Calendar::utc());
  EXPECT_TRUE(text.starts_with("No discovery yet\n\nPending Updates         0\n")) << text;
  EXPECT_NE(text.find("Last Discovery          never\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("Update Deadline"), std::string::npos) << text;
  const auto json = ctl::statusJson(report);
  EXPECT_TRUE(json.find("lastDiscoveryDate")->isNull());
  EXPECT_EQ(*json.find("helperStatus"), JsonValue("notRegistered"));
  EXPECT_EQ(writeJson(ctl::errorJson({.domain = "D", .code = 4, .text = "out \"of\" reach"})),
            R"({"error":{"domain":"D","code":4,"text":"out \"of\" reach"}})");
}

}  // namespace
}  // namespace corvane
