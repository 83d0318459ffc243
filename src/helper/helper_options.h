// What the daemon is told on its command line, and nothing else: no environment, no client.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "base/error.h"
#include "helper/own_schedule.h"

namespace corvane {

struct HelperOptions {
  std::filesystem::path root = "/";               // --root PATH, absolute
  std::optional<std::string> user;                // --user NAME: the console user, for machines that cannot tell
  std::optional<std::filesystem::path> userHome;  // --user-home PATH, absolute: that user's home, else the account's
  // --own-work-after SECONDS, up to a day: what it waits after its start before it works by itself
  std::chrono::seconds ownWorkAfter = kFirstOwnWork;
  // --installomator-source URL: the source host's API. Without it the public one, but with another root than "/" none,
  // so that what was made for that root is not replaced.
  std::optional<std::string> installomatorSource;

  // `arguments` without the program's name. Fails with a usage line for anything unknown, doubled or incomplete.
  [[nodiscard]] static Result<HelperOptions> parse(std::span<const char* const> arguments);
};

// The text for --help.
[[nodiscard]] std::string helperHelp();

}  // namespace corvane
