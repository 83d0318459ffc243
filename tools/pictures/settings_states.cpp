#include "pictures/settings_states.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace corvane {
namespace {

using Kind = ControlKind;

const std::string kManaged = "Provided by your organization through managed configuration.";

SettingsControl control(std::string key, Kind kind, std::string label, std::string value = "", std::string help = "") {
  return {.key = std::move(key),
          .kind = kind,
          .label = std::move(label),
          .value = std::move(value),
          .help = std::move(help)};
}

SettingsControl stepper(std::string key, std::string label, std::string value) {
  auto made = control(std::move(key), Kind::stepper, std::move(label), std::move(value));
  made.mayDecrease = made.mayIncrease = true;
  return made;
}

PageButton button(std::string text, bool enabled = true) {
  return {.text = std::move(text), .visible = true, .enabled = enabled};
}

SettingsSection choices() {
  SettingsSection section{.key = "choices", .title = "User Experience"};
  auto picker = control("notify", Kind::picker, "Notifications", "success", "Controls when notifications are shown.");
  picker.choices = {{"success", "Success only"}, {"all", "All"}, {"silent", "Silent"}};
  auto other = control("action", Kind::picker, "Blocking process action", "prompt_user_loop");
  other.choices = picker.choices;
  section.controls = {picker, other, control("reopen", Kind::toggle, "Re-open app after update", "true"),
                      control("force", Kind::toggle, "Force install even if same version", "false",
                              "When enabled, an app is installed even if its version appears unchanged.")};
  return section;
}

SettingsSection steppers() {
  SettingsSection section{.key = "steppers", .title = "Focus Deferral"};
  auto count = stepper("count", "Count limit", "3 deferrals");
  count.hasOffState = true;
  auto days = stepper("days", "Day limit", "Off");
  days.hasOffState = true;
  days.isOn = days.mayDecrease = days.mayIncrease = false;
  auto delay = stepper("delay", "Automatic deferral", "1 hour");
  delay.mayDecrease = false;
  delay.help =
      "While Focus, Do Not Disturb, or a display-sleep assertion is active, Corvane defers automatically for this "
      "long and hides the dialog. Leave both limits off to disable automatic focus deferrals.";
  section.controls = {count, days, delay, control("start", Kind::timeOfDay, "Start", "09:00"),
                      control("end", Kind::timeOfDay, "End", "25:99")};
  section.controls.back().problem = "25:99 is no time of day. Write it as 17:00.";
  return section;
}

SettingsSection fields() {
  SettingsSection section{.key = "fields", .title = "Webhooks and paths"};
  auto proxy = control("proxy", Kind::text, "Proxy", "", "Optional HTTP proxy used for downloads.");
  proxy.prompt = "e.g. proxy.example.com:8080";
  auto ignored = control("ignored", Kind::text, "Ignored", "zoom* googlechrome");
  ignored.enabled = false;
  ignored.managed = kManaged;
  auto webhook = control("webhook", Kind::secret, "Webhook URL", "https://hooks.example.com/services/T0/B0/secret");
  webhook.revealText = "Reveal URL";
  auto token = control("token", Kind::secret, "Personal access token");
  token.prompt = "github_pat_...";
  auto paths = control("paths", Kind::multiline, "Additional ignored paths", "/Volumes/Backup\n/Users/Shared/Old",
                       "One path per line. Matching is case-insensitive.");
  section.controls = {proxy, ignored, webhook, token, paths};
  return section;
}

SettingsSection facts() {
  SettingsSection section{.key = "facts", .title = "Information"};
  auto operational = control("operational", Kind::fact, "Operational", "No");
  operational.color = ColorRole::red;
  section.controls = {control("version", Kind::fact, "Version", "4.0.2 (417)"),
                      operational,
                      control("open", Kind::button, "Open Login Items & Extensions", "",
                              "The helper waits to be approved by an administrator of this Mac."),
                      control("reset", Kind::button, "Reset Helper"),
                      control("project", Kind::link, "Corvane project", "https://corvane.example.org"),
                      control("advanced", Kind::disclosure, "Show advanced installation options", "false",
                              "These are rarely needed day-to-day."),
                      control("closing", Kind::note, "", "",
                              "These settings are composed into the options string used for all label executions.")};
  return section;
}

SettingsSection testMode() {
  SettingsSection section{.key = "test",
                          .title = "⚠️ Admin Test Mode",
                          .warning = "What stands here overrides the cadence of this Mac until it is switched off."};
  section.controls = {control("date", Kind::date, "Hard deadline", "2026-11-27 17:00"),
                      control("show", Kind::toggle, "Show the prompt at once", "false")};
  return section;
}

SettingsState state(std::string name, SettingsPage page) { return {.name = std::move(name), .page = std::move(page)}; }

}  // namespace

SettingsPage everyKindOfControl() {
  return {.windowTitle = "Corvane Settings",
          .pickerTitle = "Settings Section",
          .tabs = {{"installomator", "Installomator"},
                   {"deferrals", "Deferrals"},
                   {"advanced", "Advanced"},
                   {"about", "About"}},
          .selectedTab = "installomator",
          .sections = {choices(), steppers(), fields(), facts(), testMode()},
          .savedText = "Settings saved at 3:40 PM",
          .save = button("Save")};
}

std::vector<SettingsState> allSettingsStates() {
  std::vector<SettingsState> states;
  auto page = everyKindOfControl();
  states.push_back(state("settings", page));
  auto whole = state("settings-whole", page);
  whole.height = 2300;
  states.push_back(whole);
  auto managed = page;
  managed.isManaged = true;
  managed.bannerTitle = "Some settings are managed by your organization";
  managed.bannerCaption = "Contact Example Service Desk with questions about configured settings.";
  managed.savedText = "Edited, not saved yet";
  managed.hasEdits = true;
  for (auto& section : managed.sections)
    for (auto& one : section.controls) {
      one.enabled = false;
      one.managed = kManaged;
    }
  states.push_back(state("settings-managed", managed));
  auto asking = page;
  asking.question = {.visible = true,
                     .title = "Reset Root Helper?",
                     .text =
                         "This will unregister the Corvane root helper and immediately re-register it with the "
                         "current build.",
                     .yes = button("Reset"),
                     .no = button("Cancel")};
  states.push_back(state("settings-question", asking));
  auto large = state("settings-large-text", page);
  large.textScale = 1.5;
  large.width = 1080;
  large.height = 3400;
  states.push_back(large);
  auto narrow = state("settings-large-text-narrow", page);
  narrow.textScale = 1.5;
  narrow.width = 560;
  narrow.height = 900;
  states.push_back(narrow);
  std::ranges::move(settingsTabStates(), std::back_inserter(states));
  const auto light = states;
  for (auto copy : light) {
    copy.name += "-dark";
    copy.dark = true;
    states.push_back(std::move(copy));
  }
  return states;
}

}  // namespace corvane
