// From the dashboard's values to its first frame, drawn in software without a display, as the first window of a
// process.
#include <QGuiApplication>
#include <QQuickWindow>
#include <algorithm>
#include <cstdio>

#include "figure.h"
#include "pictures/page_states.h"
#include "ui/dashboard_window.h"
#include "ui/prompt_bridge.h"
#include "ui/windows_application.h"

namespace {

constexpr double kFirstFrameLimit = 300;  // ms

}  // namespace

int main(int argc, char** argv) {
  using namespace corvane;
  ui::drawWithoutDisplay();
  QGuiApplication application(argc, argv);
  ui::prepareApplication();
  const auto states = allPageStates();
  const auto state = std::ranges::find(states, "thousand-rows", &PageState::name);
  if (state == states.end()) return 1;
  const auto page = state->page();
  const auto setup = state->setupPage();

  bool drawn = false;
  const auto microseconds = bench::microsecondsOf([&] {
    ui::PromptBridge prompt({});
    ui::DashboardBridge bridge({}, prompt);
    bridge.setPage(page);
    bridge.setSetupPage(setup);
    ui::DashboardWindow window(bridge);
    if (!window.ok()) return;
    window.show();
    drawn = !window.window()->grabWindow().isNull();
  });
  if (!drawn) {
    std::fputs("first_frame_bench: nothing was drawn\n", stderr);
    return 1;
  }
  bench::limitFigure("dashboard of 1,000 rows, first frame", "ms", microseconds / 1000, kFirstFrameLimit);
  return 0;
}
