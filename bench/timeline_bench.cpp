// What a long life at rest costs: the watcher, prompt and model over simulated years; and the prompt with a long list.
#include <fmt/format.h>

#include <chrono>
#include <limits>

#include "figure.h"
#include "platform/scripted/scripted_locale.h"
#include "presentation/deferral_prompt_page.h"
#include "simulation/simulated_mac.h"

namespace corvane {
namespace {

constexpr int kDays = 10'000;

// A person at an office who defers for an hour as long as they may; each Monday the vendors have new versions. The
// laptop sleeps while nobody is there.
double secondsOfALongLife() {
  constexpr auto kComes = 9h;
  constexpr auto kLeaves = 17h;
  SimulatedMacPlan plan{
      .apps = {{.label = "anvil"}, {.label = "bellows"}, {.label = "crucible"}},
      .habits = {.answer = Habits::Answer::defers, .comes = kComes / 1min, .leaves = kLeaves / 1min, .weekends = false},
      .keepsLog = false};
  plan.settings["DeadlineCountHard"] = PlistValue(20);
  plan.settings["DeadlineDaysHard"] = PlistValue(5);
  SimulatedMac mac(plan);
  const auto calendar = ScriptedLocale(plan.zone).calendar();
  const std::chrono::sys_days monday = calendar.local(mac.now()).day;
  const auto microseconds = bench::microsecondsOf([&] {
    for (int day = 0; day < kDays; ++day) {
      if (day % 7 == 0)
        for (const auto* label : {"anvil", "bellows", "crucible"}) mac.release(label, fmt::format("{}.0", day / 7 + 2));
      if (day % 7 >= 5) continue;
      const auto today = monday + std::chrono::days(day);
      mac.sleepUntil(calendar.at(today, kComes));
      mac.runUntil(calendar.at(today, kLeaves));
      mac.diary().clear();
    }
  });
  for (const auto& rule : mac.brokenRules()) fmt::print(stderr, "{}\n", rule);
  return mac.brokenRules().empty() ? microseconds / 1e6 : std::numeric_limits<double>::infinity();
}

double millisecondsOfALongPrompt() {
  constexpr int kApplications = 500;
  std::vector<DeferralPromptApp> apps;
  Apps inventory;
  for (int i = 0; i < kApplications; ++i) {
    const auto name = fmt::format("label{}", i);
    apps.push_back({.label = Label(name), .name = "Application " + name, .currentVersion = "1.0", .newVersion = "2.0"});
    AppInfo app;
    app.label = Label(name);
    app.appPath = "/Applications/" + name + ".app";
    inventory.push_back(std::move(app));
  }
  const ScriptedLocale locale("Europe/Berlin");
  const PageTexts texts{AppDisplayTitle(CorvaneConfiguration())};
  DeferralFields fields;
  fields.showDeferralPrompt = true;
  const auto now = VirtualMachine::kStart;
  const auto microseconds = bench::medianMicroseconds(51, [&] {
    auto page = makeDeferralPromptPage(
        {.fields = fields, .apps = apps, .inventory = inventory, .options = {60, 120, 240, 1440}}, now, locale, texts);
    tellTime(page, {.secondsLeft = 300, .selectedMinutes = 60}, now, locale, texts);
  });
  return microseconds / 1000;
}

}  // namespace
}  // namespace corvane

int main() {
  using namespace corvane;
  bench::limitFigure("10,000 simulated days", "s", secondsOfALongLife(), 10);
  bench::limitFigure("prompt page, 500 applications", "ms", millisecondsOfALongPrompt(), 5);
}
