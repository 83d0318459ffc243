#include "core/policies/self_update_version_display.h"

#include <algorithm>
#include <utility>

#include "base/json.h"

namespace corvane {

namespace {

constexpr const char* kBuild = "SelfUpdateDisplayBuild";
constexpr const char* kVersion = "SelfUpdateDisplayVersion";
constexpr const char* kDate = "SelfUpdateDisplayDate";
constexpr int kOK = 200;

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<std::string> known(const std::optional<std::string>& version) {
  return version && version->find_first_not_of(" \t\r\n") != std::string::npos ? version : std::nullopt;
}

// The next run of digits and of dots between them; empty behind the last one.
std::string_view takeNumber(std::string_view& text) {
  text.remove_prefix(
      std::min(static_cast<std::size_t>(std::ranges::find_if(text, isDigit) - text.begin()), text.size()));
  std::size_t end = 0;
  while (end < text.size() &&
         (isDigit(text[end]) || (text[end] == '.' && end + 1 < text.size() && isDigit(text[end + 1]))))
    ++end;
  const auto number = text.substr(0, end);
  text.remove_prefix(end);
  return number;
}

bool names(std::string_view text, std::string_view build) {
  for (auto number = takeNumber(text); !number.empty(); number = takeNumber(text))
    if (number == build) return true;
  return false;
}

std::optional<std::string> dottedIn(std::string_view text) {
  for (auto number = takeNumber(text); !number.empty(); number = takeNumber(text))
    if (number.find('.') != std::string_view::npos) return std::string(number);
  return std::nullopt;
}

std::string_view textAt(const JsonValue& release, std::string_view key) {
  const auto* value = release.find(key);
  return value != nullptr ? value->string().value_or("") : "";
}

bool isFresh(const PreferenceManager& preferences, Date now) {
  const auto found = preferences.readOptional<Date>(kDate);
  return found && *found <= now && now - *found < SelfUpdateVersionDisplay::kFreshFor;
}

void keep(PreferenceManager& preferences, const std::string& build, const std::string& display, Date now) {
  preferences.changeUser(kVersion, [&](PlistDict& values) {
    values.insert_or_assign(kBuild, PlistValue(build));
    values.insert_or_assign(kVersion, PlistValue(display));
    values.insert_or_assign(kDate, PlistValue(now));
  });
}

}  // namespace

bool SelfUpdateVersionDisplay::isBuildNumber(std::string_view version) {
  return !version.empty() && std::ranges::all_of(version, isDigit);
}

std::optional<std::string> SelfUpdateVersionDisplay::combined(const std::optional<std::string>& shortVersion,
                                                              const std::optional<std::string>& build) {
  const auto version = known(shortVersion);
  const auto number = known(build);
  if (!version || !number || version == number) return version ? version : number;
  return *version + " (" + *number + ")";
}

std::optional<std::string> SelfUpdateVersionDisplay::displayIn(std::string_view releases, std::string_view build) {
  const auto json = parseJson(releases);
  const auto* list = json ? json->array() : nullptr;
  if (list == nullptr || !isBuildNumber(build)) return std::nullopt;
  for (const auto& release : *list) {
    const auto name = textAt(release, "name");
    const auto tag = textAt(release, "tag_name");
    if (!names(name, build) && !names(tag, build)) continue;
    auto version = dottedIn(tag);
    if (!version) version = dottedIn(name);
    return version ? combined(version, std::string(build)) : std::nullopt;
  }
  return std::nullopt;
}

std::optional<std::string> SelfUpdateVersionDisplay::cachedDisplay(std::string_view build,
                                                                   const PreferenceManager& preferences) {
  if (preferences.readOptional<std::string>(kBuild) != build) return std::nullopt;
  return preferences.readOptional<std::string>(kVersion);
}

void SelfUpdateVersionDisplay::refresh(std::string build, Services services,
                                       Completion<std::optional<std::string>> done) {
  const auto cached = cachedDisplay(build, services.preferences);
  if (cached && isFresh(services.preferences, services.clock.now())) return done(cached);
  auto address = services.preferences.loadConfiguration()->selfUpdateReleaseListURL;
  if (address.empty() || !isBuildNumber(build)) return done(std::nullopt);
  services.http.send({.url = std::move(address), .timeLimit = kTimeLimit},
                     [build = std::move(build), services, done = std::move(done)](Result<HttpAnswer> answer) mutable {
                       auto display = answer && answer->status == kOK ? displayIn(answer->body, build) : std::nullopt;
                       if (display) keep(services.preferences, build, *display, services.clock.now());
                       done(std::move(display));
                     });
}

}  // namespace corvane
