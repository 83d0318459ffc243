// A prompt whose answers are written down instead of given.
#pragma once

#include <string>

#include "ui/prompt_bridge.h"

namespace corvane::ui {

inline PromptActions heardBy(std::string& heard) {
  return {.select = [&heard](std::int64_t minutes) { heard += "select:" + std::to_string(minutes) + " "; },
          .defer = [&heard] { heard += "defer "; },
          .install = [&heard] { heard += "install "; },
          .accept = [&heard] { heard += "accept "; },
          .decline = [&heard] { heard += "decline "; },
          .close = [&heard] { heard += "close "; }};
}

}  // namespace corvane::ui
