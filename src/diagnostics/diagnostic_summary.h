// metadata.txt: the state of the application and its helper in plain text. A pure function of facts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/date.h"
#include "platform/helper_registration.h"

namespace corvane {

// The person at the screen, where both are known.
struct ConsolePerson {
  std::string name;
  std::filesystem::path home;
  std::optional<std::uint64_t> fallbackLogSize;  // bytes; absent when there is no such file
};

// All of one moment. What is absent was not to be found; the text says so in its own words.
struct DiagnosticFacts {
  Date now{};
  std::optional<std::string> shortVersion;
  std::optional<std::string> build;
  std::filesystem::path bundlePath;
  std::string operatingSystem;
  HelperStatus helperStatus = HelperStatus::unknown;
  bool helperOperational = false;
  std::optional<std::string> registeredDigest;
  std::optional<std::string> bundledDigest;
  std::optional<Date> heartbeat;
  std::optional<std::int32_t> printExitCode;
  bool installomatorPresent = false;
  bool functionsPresent = false;
  std::optional<std::size_t> labelFiles;
  std::filesystem::path logPath;
  bool usesFallbackLog = false;
  std::string userName;
  std::vector<std::string> groups;
  std::optional<ConsolePerson> console;
};

// The words of what `id -Gn` printed.
[[nodiscard]] std::vector<std::string> groupNames(std::string_view printed);

[[nodiscard]] std::string summaryText(const DiagnosticFacts& facts);

}  // namespace corvane
