#include "app/command_line.h"

#include <fmt/format.h>

#include <algorithm>

namespace corvane {

LaunchArguments LaunchArguments::parse(std::span<const std::string_view> arguments) {
  const auto has = [&](std::string_view wanted) { return std::ranges::find(arguments, wanted) != arguments.end(); };
  LaunchArguments parsed{.help = has("--help") || has("-h")};
  for (const std::string_view job : {"--clear-notifications", "--generate-diagnostic-bundle"})
    if (!parsed.batchJob && has(job)) parsed.batchJob = job;
  if (const auto link = std::ranges::find_if(arguments, isDeferralPromptLink); link != arguments.end())
    parsed.promptLink = *link;
  return parsed;
}

bool isDeferralPromptLink(std::string_view address) {
  constexpr std::string_view kScheme = "corvane://";
  if (!address.starts_with(kScheme)) return false;
  address.remove_prefix(kScheme.size());
  return address.substr(0, address.find_first_of("/?#")) == "show-deferral-prompt";
}

std::string usageText(std::string_view title) {
  return fmt::format(
      "{0}\n\n"
      "  --generate-diagnostic-bundle [--output <dir|file.zip>] [--verbose]\n"
      "      Write a diagnostic zip and print its path on stdout.\n"
      "      With no --output, the zip is written to /var/tmp.\n"
      "      Progress is written to stderr when stderr is a terminal, or with --verbose.\n\n"
      "  --clear-notifications\n"
      "      Remove delivered and scheduled {0} notifications, then exit.\n\n"
      "  --help\n"
      "      Show this usage.\n",
      title);
}

}  // namespace corvane
