#include "helper/tool_output.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isAlphanumeric(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isTimestamp(std::string_view text) {
  constexpr std::string_view form = "dddd-dd-dd dd:dd:dd";
  return std::ranges::equal(text, form, [](char c, char f) { return f == 'd' ? isDigit(c) : c == f; });
}

// What stands between `before` and the last `after` behind it ("" is the end); absent when either is missing.
std::optional<std::string_view> between(std::string_view text, std::string_view before, std::string_view after) {
  const auto start = text.find(before);
  if (start == std::string_view::npos) return std::nullopt;
  text.remove_prefix(start + before.size());
  if (after.empty()) return text;
  const auto end = text.rfind(after);
  if (end == std::string_view::npos) return std::nullopt;
  return text.substr(0, end);
}

// Names hold blanks and may hold the words themselves, so the version is what follows the last of them.
std::string_view afterLast(std::string_view text, std::string_view words) {
  const auto found = text.rfind(words);
  return found == std::string_view::npos ? std::string_view() : text.substr(found + words.size());
}

struct VersionLine {
  std::string_view before;
  std::string_view words;
  std::string_view after;
};

constexpr std::array kVersionLines = {
    VersionLine{"Latest version of ", " is ", ""},
    VersionLine{"Downloaded version of ", " is ", " on versionKey "},
    VersionLine{"Installing ", " version ", " on versionKey "},
    VersionLine{"Downloaded package ", " version ", ""},
};

}  // namespace

bool isBelievableVersion(std::string_view text) {
  return !text.empty() && text.size() <= kVersionLengthLimit && isAlphanumeric(text.front()) &&
         std::ranges::any_of(text, isDigit) &&
         std::ranges::all_of(text, [](char c) { return c > ' ' && c < '\x7f' && c != '/'; });
}

std::optional<std::string_view> toolMessage(std::string_view line) {
  constexpr std::size_t timestampLength = 19;
  constexpr std::string_view separator = " : ";
  if (line.size() < timestampLength || !isTimestamp(line.substr(0, timestampLength))) return std::nullopt;
  line.remove_prefix(timestampLength);
  for (int field = 0; field < 3; ++field) {  // time, level and label end here
    const auto end = line.find(separator);
    if (end == std::string_view::npos || (field == 0 && end != 0)) return std::nullopt;
    line.remove_prefix(end + separator.size());
  }
  return line;
}

std::optional<std::string> latestVersionIn(std::string_view line) {
  const auto message = toolMessage(line);
  if (!message) return std::nullopt;
  for (const auto& form : kVersionLines) {
    if (!message->starts_with(form.before)) continue;
    const auto middle = between(*message, form.before, form.after);
    if (!middle) continue;
    const auto version = afterLast(*middle, form.words);
    if (isBelievableVersion(version)) return std::string(version);
  }
  return std::nullopt;
}

std::optional<std::string> blockingProcessIn(std::string_view line) {
  constexpr std::string_view words = "found blocking process ";
  const auto message = toolMessage(line);
  if (!message || !message->starts_with(words)) return std::nullopt;
  return std::string(message->substr(words.size()));
}

}  // namespace corvane
