// The Installomator options string: "KEY=value" tokens, nothing quoted. It is read, composed and, for the
// helper alone, turned into arguments that the tool's evaluation cannot be tricked by.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

struct InstallomatorOptions {
  std::string notify = "success";                   // NOTIFY
  std::string blockingProcessAction = "tell_user";  // BLOCKING_PROCESS_ACTION
  std::string logo = "appstore";                    // LOGO, or "custom"
  std::string logoCustomPath;                       // LOGO when it holds a "/"
  bool ignoreAppStoreApps = false;                  // IGNORE_APP_STORE_APPS
  bool systemOwnerRoot = false;                     // SYSTEMOWNER
  bool forceInstall = false;                        // INSTALL
  bool reopenApp = true;                            // REOPEN
  bool interruptDND = true;                         // INTERRUPT_DND
  std::string ignoreDndApps;                        // IGNORE_DND_APPS
  std::string proxy;                                // PROXY
  std::int64_t promptTimeout = 86400;               // PROMPT_TIMEOUT, seconds
  std::map<std::string, std::string> unknown;       // every other pair; survives composing unchanged

  friend bool operator==(const InstallomatorOptions&, const InstallomatorOptions&) = default;
};

// Total: tokens without "=" are dropped, the last of equal keys wins. A value with a blank does not come back
// whole, since nothing is quoted.
[[nodiscard]] InstallomatorOptions parseInstallomatorOptions(std::string_view options);

// Tokens in ascending order, joined by one blank.
[[nodiscard]] std::string composeInstallomatorOptions(const InstallomatorOptions& options);

// The value of `key` as it stands in the string; absent when the string does not set it.
[[nodiscard]] std::optional<std::string> optionValue(std::string_view options, std::string_view key);
// Case of the value is ignored.
[[nodiscard]] bool optionIs(std::string_view options, std::string_view key, std::string_view value);

// Who set the string. Any key is taken from the managed domain; from a user's only the keys of the table
// above, since any other could replace a download address or a team identifier in a run as root.
enum class OptionsSource { user, managed };

struct OptionArguments {
  struct LeftOut {
    std::string key;
    std::string reason;  // for the log
    friend bool operator==(const LeftOut&, const LeftOut&) = default;
  };
  std::vector<std::string> arguments;  // "KEY='value'", in ascending order of keys
  std::vector<LeftOut> leftOut;
};

// Each argument, evaluated by a shell any number of times, sets KEY to exactly the configured text and does
// nothing else.
[[nodiscard]] OptionArguments optionArguments(std::string_view options, OptionsSource source);

// One such argument. Absent when `key` is no shell name or `value` holds a NUL or a line break.
[[nodiscard]] std::optional<std::string> quotedAssignment(std::string_view key, std::string_view value);

}  // namespace corvane
