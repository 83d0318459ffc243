#include "helper/helper_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <string_view>

#include "base/safe_address.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> kNames = {"--root", "--user", "--user-home", "--own-work-after",
                                                    "--installomator-source"};

constexpr std::string_view kUsage =
    "usage: CorvaneRootHelper [--root PATH] [--user NAME] [--user-home PATH] [--own-work-after SECONDS] "
    "[--installomator-source URL]";

std::unexpected<Error> usage(std::string_view trouble) {
  return failure("CRVHelperOptions", 1, fmt::format("{}\n{}", trouble, kUsage));
}

Status takeSeconds(std::chrono::seconds& seconds, std::string_view name, std::string_view value) {
  int number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc() || end != value.data() + value.size() || number < 0 || number > 86400)
    return usage(fmt::format("{} needs seconds from 0 to 86400", name));
  seconds = std::chrono::seconds(number);
  return {};
}

Status take(HelperOptions& options, std::string_view name, const std::string& value) {
  if (value.empty()) return usage(fmt::format("{} needs a value", name));
  if (name == "--user") {
    options.user = value;
    return {};
  }
  if (name == "--installomator-source") {
    if (!isSafeAddress(value)) return usage(fmt::format("{} needs an https address", name));
    options.installomatorSource = value;
    return {};
  }
  if (name == "--own-work-after") return takeSeconds(options.ownWorkAfter, name, value);
  const std::filesystem::path path = std::filesystem::path(value).lexically_normal();
  if (!path.is_absolute()) return usage(fmt::format("{} needs an absolute path", name));
  if (name == "--root")
    options.root = path;
  else
    options.userHome = path;
  return {};
}

}  // namespace

std::string helperHelp() {
  return fmt::format(
      "{}\n\n"
      "The root helper of Corvane. The service manager starts it, or Corvane for a user of its own.\n\n"
      "  --root PATH                   the system root it serves; the machine's own without it\n"
      "  --user NAME                   whose preferences count, instead of who sits at the machine\n"
      "  --user-home PATH              the home of that user\n"
      "  --own-work-after SECONDS      how long after its start it begins work of its own, 0 to 86400\n"
      "  --installomator-source URL    where Installomator is fetched from\n"
      "  --help                        this text\n",
      kUsage);
}

Result<HelperOptions> HelperOptions::parse(std::span<const char* const> arguments) {
  HelperOptions options;
  std::set<std::string_view> seen;
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const std::string_view name = arguments[i];
    if (std::ranges::find(kNames, name) == kNames.end()) return usage(fmt::format("unknown argument {}", name));
    if (!seen.insert(name).second) return usage(fmt::format("{} is given twice", name));
    if (i + 1 == arguments.size()) return usage(fmt::format("{} needs a value", name));
    if (auto taken = take(options, name, arguments[i + 1]); !taken) return std::unexpected(taken.error());
  }
  return options;
}

}  // namespace corvane
