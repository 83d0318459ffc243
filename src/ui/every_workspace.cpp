#include "ui/every_workspace.h"

#include <xcb/xcb.h>

#include <QtGui/qguiapplication_platform.h>
#include <QGuiApplication>
#include <QWindow>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace corvane::ui {

void showOnEveryWorkspace(QWindow& window) {
  auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return;
  constexpr std::string_view kProperty = "_NET_WM_DESKTOP";  // of the window-manager hints
  constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;
  auto* connection = x11->connection();
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      xcb_intern_atom_reply(
          connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(kProperty.size()), kProperty.data()),
          nullptr),
      &std::free);
  if (!atom) return;
  window.create();
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()), atom->atom,
                      XCB_ATOM_CARDINAL, 32, 1, &kAllDesktops);
}

}  // namespace corvane::ui
