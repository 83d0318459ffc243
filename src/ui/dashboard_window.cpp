#include "ui/dashboard_window.h"

#include <QQuickWindow>

#include "ui/page_engine.h"

namespace corvane::ui {

DashboardWindow::DashboardWindow(DashboardBridge& bridge)
    : window_(loadPage(engine_, QStringLiteral("Dashboard"), bridge)) {}

DashboardWindow::~DashboardWindow() = default;

void DashboardWindow::show() { showInFront(*window_); }

void DashboardWindow::resize(int width, int height) { window_->resize(width, height); }

void DashboardWindow::setAppearance(const Appearance& appearance) { applyAppearance(*window_, appearance); }

QImage DashboardWindow::grab() { return grabWhole(*window_); }

}  // namespace corvane::ui
