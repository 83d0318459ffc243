#include "core/policies/self_update_version_check.h"

#include <algorithm>

#include "core/policies/version_comparator.h"

namespace corvane {

namespace {

constexpr std::string_view kAssignment = "versionKey=";
constexpr std::string_view kBlanks = " \t\r";

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool isLabelCharacter(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
}

constexpr bool isKeyCharacter(char c) { return isLabelCharacter(c) || c == '.'; }

// The literal that a value begins with; absent for a computed or an unfinished one.
std::optional<std::string> literal(std::string_view value) {
  if (value.empty()) return std::nullopt;
  const char quote = value.front();
  if (quote == '"' || quote == '\'') {
    const auto end = value.find(quote, 1);
    if (end == std::string_view::npos) return std::nullopt;
    value = value.substr(1, end - 1);
  } else {
    value = value.substr(0, value.find_first_of(" \t\r;#"));
  }
  if (value.empty() || !std::ranges::all_of(value, isKeyCharacter)) return std::nullopt;
  return std::string(value);
}

std::optional<std::string> known(const std::optional<std::string>& version) {
  return version && version->find_first_not_of(" \t\r\n") != std::string::npos ? version : std::nullopt;
}

}  // namespace

std::string SelfUpdateVersionCheck::labelSource(const Label& label, const std::filesystem::path& fragmentsPath,
                                                const Files& files) {
  if (label.empty() || !std::ranges::all_of(label.text, isLabelCharacter)) return {};
  return files.read(fragmentsPath / "labels" / (label.text + ".sh")).value_or(std::string());
}

std::optional<std::string> SelfUpdateVersionCheck::versionKey(std::string_view source) {
  while (!source.empty()) {
    const auto end = std::min(source.find('\n'), source.size());
    auto line = source.substr(0, end);
    source.remove_prefix(std::min(end + 1, source.size()));
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (line.starts_with(kAssignment)) return literal(line.substr(kAssignment.size()));
  }
  return std::nullopt;
}

bool SelfUpdateVersionCheck::comparesBundleVersion(const std::optional<std::string>& versionKey) {
  return versionKey == "CFBundleVersion";
}

std::optional<std::string> SelfUpdateVersionCheck::displayedRunningVersion(
    const RunningVersions& running, const std::optional<std::string>& versionKey) {
  return known(comparesBundleVersion(versionKey) ? running.bundleVersion : running.shortVersion);
}

bool SelfUpdateVersionCheck::needsUpdate(const RunningVersions& running,
                                         const std::optional<std::string>& availableVersion,
                                         const std::optional<std::string>& versionKey, VersionComparisonMethod method) {
  const auto version = displayedRunningVersion(running, versionKey);
  return version && VersionComparator::hasUpdate(version, std::nullopt, availableVersion, method);
}

}  // namespace corvane
