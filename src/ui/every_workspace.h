// A window that its user sees on whichever workspace they are.
#pragma once

class QWindow;

namespace corvane::ui {

// Before the window is shown. Under X11 the window manager is told; other displays have no way to ask for it, and
// nothing happens there.
void showOnEveryWorkspace(QWindow& window);

}  // namespace corvane::ui
