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
  // An address among the arguments that leads to the deferral prompt.
  std::optional<std::string_view> promptLink;

  [[nodiscard]] static LaunchArguments parse(std::span<const std::string_view> arguments);
};

// Scheme "corvane" and host "show-deferral-prompt", both exactly so; whatever follows the host is of no effect.
[[nodiscard]] bool isDeferralPromptLink(std::string_view address);

// `title` is the configured display title.
[[nodiscard]] std::string usageText(std::string_view title);

}  // namespace corvane
