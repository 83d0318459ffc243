// Draws the dashboard, the logs, the prompt, the confirmation and the settings in each of their states into a folder:
// corvane_screenshots FOLDER [NAME...]
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "pictures/log_states.h"
#include "pictures/page_states.h"
#include "pictures/prompt_states.h"
#include "pictures/settings_states.h"
#include "ui/confirmation_bridge.h"
#include "ui/dashboard_window.h"
#include "ui/floating_panel.h"
#include "ui/page_engine.h"
#include "ui/prompt_bridge.h"
#include "ui/settings_window.h"
#include "ui/windows_application.h"

namespace {

using namespace corvane;

bool save(const QImage& picture, const std::filesystem::path& folder, const std::string& name) {
  return picture.save(ui::toQString((folder / (name + ".png")).string()));
}

bool draw(const PageState& state, const DeferralPromptPage& prompt, const std::filesystem::path& folder) {
  ui::PromptBridge promptBridge({});
  ui::DashboardBridge bridge({}, promptBridge);
  bridge.setWindowTitle(QStringLiteral("Corvane"));
  bridge.setPage(state.page());
  bridge.setSetupPage(state.setupPage());
  ui::DashboardWindow window(bridge);
  if (!window.ok()) return false;
  window.setAppearance({.dark = state.dark, .reducedMotion = true, .textScale = state.textScale});
  window.resize(state.width, state.height);
  promptBridge.setPage(prompt);
  window.show();
  QCoreApplication::processEvents();
  return save(window.grab(), folder, state.name);
}

bool draw(const LogState& state, const std::filesystem::path& folder) {
  const auto behind = ordinaryState();
  ui::PromptBridge promptBridge({});
  ui::LogBridge logs({.refresh = [] {}, .clear = [] {}, .setLevel = [](auto&) {}, .setSearch = [](auto&) {}});
  logs.setPage(state.page);
  logs.setRows(state.rows, Calendar::utc());
  ui::DashboardBridge bridge({}, promptBridge, &logs);
  bridge.setWindowTitle(QStringLiteral("Corvane"));
  bridge.setPage(behind.page());
  ui::DashboardWindow window(bridge);
  if (!window.ok()) return false;
  window.setAppearance({.dark = state.dark, .reducedMotion = true});
  window.resize(state.width, state.height);
  window.show();
  bridge.selectSection(QStringLiteral("logs"));
  QCoreApplication::processEvents();
  if (auto* list = window.window()->findChild<QQuickItem*>(QStringLiteral("logEntries")))
    list->setProperty("current", state.chosen);
  return save(window.grab(), folder, state.name);
}

bool draw(ui::FloatingPanel& panel, const PromptState& state, const std::filesystem::path& folder) {
  panel.setAppearance({.dark = state.dark, .reducedMotion = true, .textScale = state.textScale});
  return panel.show() && save(ui::grabWhole(*panel.window()), folder, state.name);
}

bool draw(const PromptState& state, const std::filesystem::path& folder) {
  if (state.inDashboard) {
    auto behind = ordinaryState();
    behind.name = state.name;
    behind.dark = state.dark;
    return draw(behind, state.page, folder);
  }
  if (state.inOwnPanel) {
    ui::ConfirmationBridge bridge({});
    bridge.setPage(state.page.confirmation);
    ui::FloatingPanel panel(ui::kConfirmationPanel, bridge);
    return draw(panel, state, folder);
  }
  ui::PromptBridge bridge({});
  bridge.setPage(state.page);
  ui::FloatingPanel panel(ui::kPromptPanel, bridge);
  return draw(panel, state, folder);
}

// A page that is only looked at.
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

bool draw(const SettingsState& state, const std::filesystem::path& folder) {
  NoActions actions;
  ui::PromptBridge prompt({});
  ui::SettingsBridge bridge(actions, prompt);
  bridge.setPage(state.page);
  ui::SettingsWindow window(bridge);
  if (!window.ok()) return false;
  window.setAppearance({.dark = state.dark, .reducedMotion = true, .textScale = state.textScale});
  window.window()->resize(state.width, state.height);
  window.show();
  QCoreApplication::processEvents();
  return save(window.grab(), folder, state.name);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.empty()) {
    std::fprintf(stderr, "usage: corvane_screenshots FOLDER [NAME...]\n");
    return 2;
  }
  ui::drawWithoutDisplay();
  QGuiApplication application(argc, argv);
  ui::prepareApplication();
  std::filesystem::create_directories(arguments.front());
  bool fine = true;
  const auto wanted = [&](const std::string& name) {
    return arguments.size() == 1 || std::ranges::count(arguments.begin() + 1, arguments.end(), name) > 0;
  };
  for (const auto& state : allPageStates())
    if (wanted(state.name)) fine = draw(state, {}, arguments.front()) && fine;
  for (const auto& state : allLogStates())
    if (wanted(state.name)) fine = draw(state, arguments.front()) && fine;
  for (const auto& state : allPromptStates())
    if (wanted(state.name)) fine = draw(state, arguments.front()) && fine;
  for (const auto& state : allSettingsStates())
    if (wanted(state.name)) fine = draw(state, arguments.front()) && fine;
  return fine ? 0 : 1;
}
