#include "pictures/prompt_states.h"

#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/virtual_time.h"

namespace corvane {

namespace {

constexpr Date kNow = VirtualMachine::kStart;
constexpr std::int64_t kSecondsLeft = 287;

DeferralPromptApp row(const char* label, const char* name, const char* from, const char* to,
                      DeferralInstallBehavior behavior) {
  return {.label = Label(label), .name = name, .currentVersion = from, .newVersion = to, .behavior = behavior};
}

std::vector<DeferralPromptApp> manyApps() {
  using enum DeferralInstallBehavior;
  std::vector<DeferralPromptApp> apps{row("bramble", "Bramble", "1.10", "1.11", askedToQuit),
                                      row("dune", "Dune Player", "0.9", "0.10", updatesInBackground),
                                      row("harbor", "Harbor", "5.1", "5.2", quitThenForceQuit),
                                      row("juniper", "Juniper VPN", "Not installed", "8.1", updatesWhenInstalled),
                                      row("note", "青い鳥ノート", "6.1", "6.2", ignore),
                                      row("quill", "Quill", "2.3.1", "2.4", ownUpdateTool),
                                      row("radio", "Übersee Radio", "1.0", "1.1", skippedWhileOpen),
                                      row("sable", "Sable", "7.0", "7.1", toldToQuit),
                                      row("thicket", "Thicket", "3.0", "3.1", askedBeforeForceQuit),
                                      row("umber", "Umber Paint", "0.4", "0.5", askedAgainInAnHour),
                                      row("vetch", "Vetch Viewer", "1.0", "1.2", toldToQuitOrForceQuit),
                                      row("wren", "Wren", "4.0", "4.0", killed)};
  apps.back().forcedReinstall = true;
  return apps;
}

std::vector<DeferralPromptApp> longNames() {
  using enum DeferralInstallBehavior;
  return {row("lantern", "A Lantern Whose Name Is So Long That It Cannot Possibly Fit Into One Line of Any Window",
              "10.2.3.4567-beta.12+build.20261101", "10.2.3.4568", askedAgainInAnHour),
          row("salam", "محرر النصوص الجديد", "3.1", "3.2", quit),
          row("shalom", "עורך (Editor) 2", "1.9", "2.0", updatesInBackground)};
}

struct Setting {
  DeferralEscalation escalation = DeferralEscalation::normal;
  DeferralPromptHost host = DeferralPromptHost::standalone;
  std::int64_t secondsLeft = kSecondsLeft;
};

DeferralPromptPage pageOf(const std::vector<DeferralPromptApp>& apps, const Setting& setting) {
  const ScriptedLocale locale;
  const PageTexts texts{AppDisplayTitle("Corvane")};
  DeferralFields fields;
  fields.showDeferralPrompt = true;
  fields.deferralPromptHost = setting.host;
  fields.currentDeferralEscalation = setting.escalation;
  fields.currentHardDeadlineDate = kNow + 52h;
  const Apps inventory;
  auto page = makeDeferralPromptPage(
      {.fields = fields,
       .apps = apps,
       .inventory = inventory,
       .options = {60, 120, 240, 1440},
       .explanation = "You have used every deferral.",
       .remaining = std::string("3 deferrals remaining, or until Nov 3, 2026, 4:00\u202FPM, whichever comes first."),
       .deferButtonIsPrimary = setting.escalation == DeferralEscalation::focus},
      kNow, locale, texts);
  tellTime(page,
           {.escalation = setting.escalation,
            .timeoutAction = DeferralAction::defer,
            .secondsLeft = setting.secondsLeft,
            .selectedMinutes = 60},
           kNow, locale, texts);
  return page;
}

}  // namespace

DeferralPromptPage promptPage(std::size_t apps, DeferralEscalation escalation, DeferralPromptHost host) {
  auto rows = manyApps();
  rows.resize(std::min(apps, rows.size()));
  return pageOf(rows, {.escalation = escalation, .host = host});
}

std::vector<PromptState> allPromptStates() {
  using enum DeferralEscalation;
  auto confirming = promptPage(4);
  confirming.confirmation = makeConfirmationPage(12, PageTexts{AppDisplayTitle("Corvane")});
  auto manyRows = manyApps();
  std::vector<PromptState> states{
      {.name = "prompt-one", .page = promptPage(1)},
      {.name = "prompt-four", .page = promptPage(4)},
      {.name = "prompt-twelve", .page = promptPage(12)},
      {.name = "prompt-focus", .page = promptPage(4, focus)},
      {.name = "prompt-hard", .page = promptPage(4, hard)},
      {.name = "prompt-hard-nearly-over", .page = pageOf(manyRows, {.escalation = hard, .secondsLeft = 7})},
      {.name = "prompt-long-names", .page = pageOf(longNames(), {})},
      {.name = "prompt-confirmation", .page = confirming},
      {.name = "confirmation-panel", .page = confirming, .inOwnPanel = true},
      {.name = "prompt-large-text", .page = pageOf(longNames(), {}), .textScale = 1.5},
      {.name = "confirmation-panel-large-text", .page = confirming, .inOwnPanel = true, .textScale = 1.5},
      {.name = "dashboard-prompt", .page = promptPage(4, normal, DeferralPromptHost::dashboard), .inDashboard = true}};
  const auto light = states;
  for (auto state : light) {
    state.name += "-dark";
    state.dark = true;
    states.push_back(std::move(state));
  }
  return states;
}

}  // namespace corvane
