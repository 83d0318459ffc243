// The log page in every state, made by the real model over files written by hand.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "presentation/log_page.h"

namespace corvane {

struct LogState {
  std::string name;  // of the picture
  LogPage page;
  FilteredLogs rows;
  int chosen = -1;  // the row that is shown whole
  int width = 920;
  int height = 680;
  bool dark = false;
};

// All that is drawn into pictures, light and dark.
[[nodiscard]] std::vector<LogState> allLogStates();

}  // namespace corvane
