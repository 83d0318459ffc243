// What the application finds in the windows module.
#include "app/windows_module.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <functional>
#include <optional>

#include "base/localized.h"
#include "platform/qt/qt_main_loop.h"
#include "platform/uv/uv_main_loop.h"
#include "presentation/deferral_prompt_controller.h"
#include "ui/confirmation_surface.h"
#include "ui/dashboard_controller.h"
#include "ui/dashboard_window.h"
#include "ui/desktop_appearance.h"
#include "ui/log_controller.h"
#include "ui/page_engine.h"
#include "ui/prompt_surface.h"
#include "ui/settings_surface.h"
#include "ui/windows_application.h"

namespace corvane::ui {
namespace {

// Qt keeps the argument list by reference.
struct Arguments {
  int count = 1;
  char name[8] = "Corvane";
  char* list[2] = {name, nullptr};
};

int runWindows(WindowsHost& host) {
  installTextCatalogue(host.texts);
  Arguments arguments;
  QGuiApplication application(arguments.count, arguments.list);
  prepareApplication();
  QObject::connect(&application, &QGuiApplication::applicationStateChanged, &application,
                   [&host](Qt::ApplicationState state) { host.activeChanged(state == Qt::ApplicationActive); });
  QtMainLoop loop(host.loop);
  PromptSurface prompt(host.prompt, host.services);
  ConfirmationSurface confirmation(host.confirmation, host.services);
  std::optional<SettingsSurface> settings;
  std::function<void()> openSettings;
  if (host.settings != nullptr) {
    settings.emplace(host.model, host.services, *host.settings, prompt.bridge());
    openSettings = [&settings] { settings->open(); };
  }
  const auto& places = host.services.places;
  LogViewModel logs({.main = host.services.main,
                     .work = host.services.work,
                     .files = host.services.files,
                     .log = host.services.log,
                     .systemLog = places.logFile(),
                     .fallbackLog = places.userLogFile(),
                     .currentWritePath = host.logFilePath});
  LogController logPage(logs, host.services);
  DashboardController controller(host.model, host.services, prompt.bridge(), host.actions, &logPage.bridge(),
                                 openSettings);
  DashboardWindow window(controller.bridge());
  if (!window.ok()) return 1;
  const DesktopAppearance appearance([&](const Appearance& wanted) {
    window.setAppearance(wanted);
    prompt.panel().setAppearance(wanted);
    confirmation.panel().setAppearance(wanted);
    if (settings) settings->setAppearance(wanted);
  });
  host.promptWindows.attach(&prompt);
  const Lease detached([&] { host.promptWindows.attach(nullptr); });
  window.show();
  return loop.exec();
}

int drawDashboard(WindowsHost& host, const std::string& file) {
  drawWithoutDisplay();
  Arguments arguments;
  QGuiApplication application(arguments.count, arguments.list);
  prepareApplication();
  PromptSurface prompt(host.prompt, host.services);
  DashboardController controller(host.model, host.services, prompt.bridge(), host.actions);
  DashboardWindow window(controller.bridge());
  if (!window.ok()) return 1;
  window.show();
  return window.grab().save(toQString(file)) ? 0 : 1;
}

int drawPrompt(const DeferralPromptPage& page, const std::string& title, const std::string& file) {
  drawWithoutDisplay();
  Arguments arguments;
  QGuiApplication application(arguments.count, arguments.list);
  prepareApplication();
  PromptBridge bridge({});
  bridge.setWindowTitle(toQString(title));
  bridge.setPage(page);
  FloatingPanel panel(kPromptPanel, bridge);
  return panel.show() && grabWhole(*panel.window()).save(toQString(file)) ? 0 : 1;
}

}  // namespace
}  // namespace corvane::ui

extern "C" {
Q_DECL_EXPORT int corvane_run_windows(corvane::WindowsHost& host) { return corvane::ui::runWindows(host); }
Q_DECL_EXPORT int corvane_draw_prompt(const corvane::DeferralPromptPage& page, const std::string& title,
                                      const std::string& file) {
  return corvane::ui::drawPrompt(page, title, file);
}
Q_DECL_EXPORT int corvane_draw_dashboard(corvane::WindowsHost& host, const std::string& file) {
  return corvane::ui::drawDashboard(host, file);
}
}
