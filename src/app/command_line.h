// The command line of the application: what it asks for, and the usage text.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace corvane {

// Arguments are whole strings anywhere in the list; unknown ones are ignored.
struct LaunchArguments {
  bool help = false;
  // "--clear-notifications" or "--generate-diagnostic-bundle", in this order, when one of them is asked for.
  std::optional<std::string_view> batchJob;

  [[nodiscard]] static LaunchArguments parse(std::span<const std::string_view> arguments);
};

// `title` is the configured display title.
[[nodiscard]] std::string usageText(std::string_view title);

}  // namespace corvane
