// The command line of the application: what it asks for, and the usage text.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvane {

// Arguments are whole strings anywhere in the list; unknown ones are ignored.
struct LaunchArguments {
  bool help = false;
  bool backgroundLaunch = false;
  bool afterInstall = false;

  [[nodiscard]] static LaunchArguments parse(std::span<const std::string_view> arguments);
};

// `title` is the configured display title.
[[nodiscard]] std::string usageText(std::string_view title);

}  // namespace corvane
