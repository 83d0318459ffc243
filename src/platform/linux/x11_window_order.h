// The order of windows as an X11 window manager publishes it. The client library is opened at the first use,
// so a machine without a display never loads it.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/linux_running_applications.h"

namespace corvane {

// Null when DISPLAY is not set. Without the library, the server or a window manager every answer is the empty
// one; a lost server is tried again at the next question.
[[nodiscard]] std::unique_ptr<WindowOrder> makeX11WindowOrder();

}  // namespace corvane
