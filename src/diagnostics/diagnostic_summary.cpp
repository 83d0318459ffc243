#include "diagnostics/diagnostic_summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "core/client/helper_installation_service.h"
#include "core/places.h"

namespace corvane {
namespace {

constexpr std::size_t kDigestStart = 12;  // characters; enough to tell two builds apart

std::string_view yesOrNo(bool value) { return value ? "yes" : "no"; }

std::string digestText(const std::optional<std::string>& digest, std::string_view absent) {
  return digest ? digest->substr(0, kDigestStart) + "…" : std::string(absent);
}

std::string wholeSeconds(Date date) { return iso8601Utc(std::chrono::floor<std::chrono::seconds>(date)); }

std::string heartbeatText(const DiagnosticFacts& facts) {
  if (!facts.heartbeat)
    return "(file missing — helper may not be running, or this build predates the heartbeat feature)";
  const auto age = std::chrono::duration_cast<std::chrono::seconds>(facts.now - *facts.heartbeat);
  return fmt::format("{} ({}s ago)", wholeSeconds(*facts.heartbeat), age.count());
}

std::string printText(const std::optional<std::int32_t>& code) {
  if (!code) return "(could not invoke /bin/launchctl)";
  return fmt::format("{} (0 = loaded; non-zero is informational on macOS 26+)", *code);
}

}  // namespace

std::vector<std::string> groupNames(std::string_view printed) {
  std::vector<std::string> names;
  std::istringstream words{std::string(printed)};
  for (std::string word; words >> word;) names.push_back(std::move(word));
  return names;
}

std::string summaryText(const DiagnosticFacts& facts) {
  std::string text;
  const auto line = [&](const auto&... parts) {
    ((text += parts), ...);
    text += '\n';
  };
  const auto inGroup = [&](std::string_view group) {
    return yesOrNo(std::ranges::find(facts.groups, group) != facts.groups.end());
  };
  line("# Corvane diagnostic bundle");
  line("Generated: ", wholeSeconds(facts.now));
  line();
  line("## App");
  line("Version: ", facts.shortVersion.value_or("unknown"), " (", facts.build.value_or("unknown"), ")");
  line("Bundle path: ", facts.bundlePath.string());
  line();
  line("## macOS");
  line(facts.operatingSystem);
  line();
  line("## Helper");
  line("SMAppService status: ", helperStatusName(facts.helperStatus));
  line("Operational: ", yesOrNo(facts.helperOperational));
  line("Last registered cdhash: ", digestText(facts.registeredDigest, "(none)"));
  line("Current bundled cdhash: ", digestText(facts.bundledDigest, "(could not be read)"));
  line("Heartbeat: ", heartbeatText(facts));
  line("launchctl print exit: ", printText(facts.printExitCode));
  line();
  line("## Installomator");
  line("Installomator.sh: ", facts.installomatorPresent ? "present" : "missing");
  line("fragments/functions.sh: ",
       facts.functionsPresent ? "present" : "missing — LabelVersionHelper cannot use the fast path");
  line("fragments/labels: ", facts.labelFiles ? fmt::format("{} label file(s)", *facts.labelFiles) : "(missing)");
  line();
  line("## Logging");
  line("GUI log path: ", facts.logPath.string());
  line("Using user fallback: ", yesOrNo(facts.usesFallbackLog));
  line();
  line("## Running user");
  line("Username: ", facts.userName);
  line("Groups: ", fmt::format("{}", fmt::join(facts.groups, ", ")));
  line("In admin group: ", inGroup("admin"));
  line("In staff group: ", inGroup("staff"));
  line();
  line("## Console user");
  if (!facts.console) {
    line("Username: (none)");
    line("Fallback log: (no console session)");
    return text;
  }
  line("Username: ", facts.console->name);
  line("Fallback log: ", CorvaneConstants{.home = facts.console->home}.userLogFile().string());
  const auto& size = facts.console->fallbackLogSize;
  line("Exists: ", size ? fmt::format("yes ({} bytes)", *size) : "no");
  return text;
}

}  // namespace corvane
