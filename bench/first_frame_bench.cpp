// From a window's values to its first frame, drawn in software without a display. Each time is that of the first
// window of a process of its own, so nothing of the toolkit is warm.
#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "figure.h"
#include "pictures/page_states.h"
#include "pictures/settings_states.h"
#include "ui/dashboard_window.h"
#include "ui/prompt_bridge.h"
#include "ui/settings_window.h"
#include "ui/windows_application.h"

namespace corvane::bench {
namespace {

constexpr double kDashboardLimit = 300;  // ms
constexpr double kSettingsLimit = 150;   // ms beyond those of an empty window
constexpr int kRuns = 7;

using Draws = std::function<bool()>;

bool isDrawn(QQuickWindow& window) {
  window.show();
  return !window.grabWindow().isNull();
}

Draws emptyWindow() {
  return [] {
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nWindow { width: 720; height: 640 }", {});
    const std::unique_ptr<QObject> made(component.create());
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    return window != nullptr && isDrawn(*window);
  };
}

Draws dashboard() {
  const auto states = allPageStates();
  const auto state = std::ranges::find(states, "thousand-rows", &PageState::name);
  if (state == states.end()) return {};
  return [page = state->page(), setup = state->setupPage()] {
    ui::PromptBridge prompt({});
    ui::DashboardBridge bridge({}, prompt);
    bridge.setPage(page);
    bridge.setSetupPage(setup);
    ui::DashboardWindow window(bridge);
    return window.ok() && isDrawn(*window.window());
  };
}

struct NoActions final : SettingsActions {
  void selectTab(const std::string&) override {}
  void set(const std::string&, const std::string&) override {}
  void step(const std::string&, std::int64_t) override {}
  void switchOn(const std::string&, bool) override {}
  void reveal(const std::string&, bool) override {}
  void press(const std::string&) override {}
  void answer(bool) override {}
  void save() override {}
};

// The tab that stands open when the window comes up.
Draws settings() {
  const auto states = settingsTabStates();
  const auto state = std::ranges::find(states, "tab-installomator", &SettingsState::name);
  if (state == states.end()) return {};
  return [page = state->page] {
    NoActions actions;
    ui::PromptBridge prompt({});
    ui::SettingsBridge bridge(actions, prompt);
    bridge.setPage(page);
    ui::SettingsWindow window(bridge);
    return window.ok() && isDrawn(*window.window());
  };
}

// In the process that is measured: prints the microseconds.
int measure(std::string_view window, int argc, char** argv) {
  ui::drawWithoutDisplay();
  QGuiApplication application(argc, argv);
  ui::prepareApplication();
  const auto draws = window == "empty" ? emptyWindow() : window == "dashboard" ? dashboard() : settings();
  bool drawn = false;
  const auto microseconds = microsecondsOf([&] { drawn = draws && draws(); });
  if (drawn) fmt::print("{}\n", microseconds);
  return drawn ? 0 : 1;
}

// Milliseconds; below zero when the window was not drawn.
double firstFrame(const QString& window) {
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process.start(QStringLiteral("/proc/%1/exe").arg(QCoreApplication::applicationPid()), {window});
  if (!process.waitForFinished(-1) || process.exitCode() != 0) return -1;
  return process.readAllStandardOutput().trimmed().toDouble() / 1000;
}

int run() {
  std::vector<double> empty;
  std::vector<double> ofDashboard;
  std::vector<double> ofSettings;
  for (int i = 0; i < kRuns; ++i) {
    empty.push_back(firstFrame(QStringLiteral("empty")));
    ofDashboard.push_back(firstFrame(QStringLiteral("dashboard")));
    ofSettings.push_back(firstFrame(QStringLiteral("settings")));
  }
  for (const auto& times : {empty, ofDashboard, ofSettings})
    if (std::ranges::min(times) < 0) {
      std::fputs("first_frame_bench: nothing was drawn\n", stderr);
      return 1;
    }
  limitFigure("dashboard of 1,000 rows, first frame", "ms", median(ofDashboard), kDashboardLimit);
  limitFigure("settings window, first frame beyond an empty window's", "ms", median(ofSettings) - median(empty),
              kSettingsLimit);
  fmt::print("an empty window's first frame | {:.1f} ms\n", median(empty));
  return 0;
}

}  // namespace
}  // namespace corvane::bench

int main(int argc, char** argv) {
  return argc > 1 ? corvane::bench::measure(argv[1], argc, argv) : corvane::bench::run();
}
