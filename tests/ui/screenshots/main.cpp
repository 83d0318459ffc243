// Draws the dashboard in each of its states into a folder: corvane_screenshots FOLDER [NAME...]
#include <QGuiApplication>
#include <QQuickWindow>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "ui/dashboard_window.h"
#include "ui/page_states.h"
#include "ui/windows_application.h"

namespace {

using namespace corvane;

bool draw(const PageState& state, const std::filesystem::path& folder) {
  ui::DashboardBridge bridge({});
  bridge.setWindowTitle(QStringLiteral("Corvane"));
  bridge.setPage(state.page());
  ui::DashboardWindow window(bridge);
  if (!window.ok()) return false;
  window.setAppearance({.dark = state.dark, .reducedMotion = true});
  window.resize(state.width, state.height);
  window.show();
  QCoreApplication::processEvents();
  return window.grab().save(ui::toQString((folder / (state.name + ".png")).string()));
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
  for (const auto& state : allPageStates()) {
    const bool wanted = arguments.size() == 1 || std::ranges::count(arguments.begin() + 1, arguments.end(), state.name);
    if (wanted) fine = draw(state, arguments.front()) && fine;
  }
  return fine ? 0 : 1;
}
