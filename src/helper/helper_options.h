// What the daemon is told on its command line, and nothing else: no environment, no client.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "base/error.h"

namespace corvane {

struct HelperOptions {
  std::filesystem::path root = "/";               // --root PATH, absolute
  std::optional<std::string> user;                // --user NAME: the console user, for machines that cannot tell
  std::optional<std::filesystem::path> userHome;  // --user-home PATH, absolute: that user's home, else the account's

  // `arguments` without the program's name. Fails with a usage line for anything unknown, doubled or incomplete.
  [[nodiscard]] static Result<HelperOptions> parse(std::span<const char* const> arguments);
};

}  // namespace corvane
