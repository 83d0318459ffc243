// Each key of a profile by itself.
#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "base/ascii.h"
#include "base/safe_address.h"
#include "core/preferences/installer_options.h"
#include "core/preferences/nearest_name.h"
#include "core/preferences/setting_values.h"
#include "core/preferences/settings_table.h"
#include "core/preferences/settings_validation.h"

namespace corvane {
namespace {

using Severity = SettingFinding::Severity;

struct Verdict {
  Severity severity = Severity::error;
  std::string reason;
  std::string fix;
};
using MaybeVerdict = std::optional<Verdict>;

MaybeVerdict wrong(std::string reason, std::string fix) {
  return Verdict{Severity::error, std::move(reason), std::move(fix)};
}
MaybeVerdict doubtful(std::string reason, std::string fix) {
  return Verdict{Severity::warning, std::move(reason), std::move(fix)};
}

std::string_view kindOf(const PlistValue& value) {
  if (value.boolean()) return "a boolean";
  if (value.integer()) return "an integer";
  if (value.number()) return "a real number";
  if (value.string()) return "a text";
  if (value.data()) return "data";
  if (value.date()) return "a date";
  if (value.array()) return "a list";
  return value.dict() ? "a dictionary" : "nothing";
}

std::string joinedChoices(SettingChoices choices) {
  std::string text;
  for (std::size_t i = 0; !choices(i).empty(); ++i) text += (i == 0 ? "" : ", ") + std::string(choices(i));
  return text;
}

std::string numbersOf(const Setting& setting) {
  return setting.range.limited() ? fmt::format(" from {} to {}", setting.range.least, setting.range.most) : "";
}

// How the value is written in a property list.
std::string wantedForm(const Setting& setting) {
  switch (setting.type) {
    case SettingType::boolean:
    case SettingType::flexibleBoolean:
      return "Write <true/> or <false/>.";
    case SettingType::integer:
    case SettingType::optionalInteger:
      return fmt::format("Write an <integer>{}.", numbersOf(setting));
    case SettingType::text:
    case SettingType::optionalText:
      return "Write a <string>.";
    case SettingType::timeOfDay:
      return "Write a time of 24 hours as a <string>, such as 09:00.";
    case SettingType::enumeration:
      return fmt::format("Write one of these as a <string>: {}.", joinedChoices(setting.choices));
    case SettingType::labelList:
    case SettingType::pathList:
      return "Write an <array> of <string>.";
    case SettingType::integerList:
      return fmt::format("Write an <array> of <integer>{}.", numbersOf(setting));
    case SettingType::dictionary:
      return fmt::format("Write a <dict> with any of {}, each {}.", joinedChoices(setting.entries),
                         joinedChoices(setting.choices));
    case SettingType::date:
      return "Write a <date>.";
    case SettingType::data:
      return "Write <data>.";
  }
  return {};
}

// Why the value does not count. Such of secret settings is told by its kind alone.
std::string whyUseless(const Setting& setting, const PlistValue& value) {
  if (setting.type == SettingType::integer || setting.type == SettingType::optionalInteger)
    if (const auto number = value.integer()) return fmt::format("{} is out of range, so the default counts.", *number);
  if (setting.type == SettingType::timeOfDay && value.string())
    return fmt::format("\"{}\" is no time of day and counts as absent.", shown(*value.string()));
  if (setting.type == SettingType::enumeration && value.string())
    return fmt::format("\"{}\" is none of its values, so the default counts.", shown(*value.string()));
  if (setting.type == SettingType::flexibleBoolean && value.string())
    return fmt::format("\"{}\" says neither yes nor no.", shown(*value.string()));
  if (setting.type == SettingType::integerList && value.array())
    return "It holds something that is no integer, so none of it counts.";
  return fmt::format("It is {}, which does not count here.", kindOf(value));
}

// Letters and signs that no label has. A list's own separator is not among them.
bool isLabelText(std::string_view text, bool pattern) {
  return std::ranges::all_of(text, [&](char c) {
    const char letter = lowered(c);
    return (letter >= 'a' && letter <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == '+' ||
           (pattern && (c == '*' || c == '?'));
  });
}

MaybeVerdict checkLabel(std::string_view label, TextForm form, const FitsALabel& fitsALabel) {
  const bool pattern = form == TextForm::labelPattern;
  if (!pattern && label.find_first_of("*?") != std::string_view::npos)
    return wrong(
        fmt::format("\"{}\" is a pattern, but this setting names labels exactly, so it fits none.", shown(label)),
        "Name each label.");
  if (!isLabelText(label, pattern))
    return wrong(fmt::format("\"{}\" can be no label.", shown(label)),
                 "Write each label as a <string> of its own in the <array>, without commas.");
  if (fitsALabel && !fitsALabel(label))
    return doubtful(fmt::format("No label of this machine's catalogue fits \"{}\".", shown(label)),
                    "See whether it is spelt as the catalogue spells it.");
  return std::nullopt;
}

MaybeVerdict checkPathPart(std::string_view part) {
  const auto text = lowercased(std::string(trimmed(part)));
  if (text.empty() || (std::string_view("/applications/").find(text) == std::string_view::npos &&
                       std::string_view(".app/").find(text) == std::string_view::npos))
    return std::nullopt;
  return wrong(fmt::format("\"{}\" stands in the path of every application, so all of them are left out.", shown(part)),
               "Write more of the path.");
}

bool isWebAddress(std::string_view text) {
  for (const std::string_view scheme : {"https://", "http://"})
    if (text.size() > scheme.size() && equalIgnoringCase(text.substr(0, scheme.size()), scheme)) return true;
  return false;
}

bool hasBlank(std::string_view text) {
  return std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F; });
}

MaybeVerdict checkOptions(std::string_view text) {
  const auto troubles = optionTroubles(text);
  if (troubles.empty()) return std::nullopt;
  std::string reasons;
  for (const auto& trouble : troubles) reasons += (reasons.empty() ? "" : " ") + trouble.text;
  const bool harmless = std::ranges::all_of(troubles, &OptionTrouble::harmless);
  return Verdict{harmless ? Severity::warning : Severity::error, std::move(reasons),
                 "Write KEY=value tokens separated by blanks, with the keys and values of the Installomator tab."};
}

MaybeVerdict checkText(const Setting& setting, std::string_view text, const FitsALabel& fitsALabel) {
  const auto bare = trimmed(text);
  if (bare.empty()) return std::nullopt;
  switch (setting.form) {
    case TextForm::free:
    case TextForm::pathPart:
      return std::nullopt;
    case TextForm::webAddress:
      if (isWebAddress(text) && !hasBlank(text)) return std::nullopt;
      return wrong("It is no web address.", "Write the whole address, with https:// in front.");
    case TextForm::secureAddress:
      if (isSafeAddress(text) && !hasBlank(text)) return std::nullopt;
      return wrong("It is no https address, and nothing is sent to any other.",
                   "Write the whole address, with https:// in front.");
    case TextForm::path:
      if (text.starts_with('/')) return std::nullopt;
      return wrong("It is no absolute path.", "Begin it with a slash.");
    case TextForm::mailAddress:
      if (bare.find('@') != std::string_view::npos && !hasBlank(bare)) return std::nullopt;
      return doubtful("It is no mail address.", "Write it as name@example.org.");
    case TextForm::label:
    case TextForm::labelPattern:
      return checkLabel(text, setting.form, fitsALabel);
    case TextForm::installerOptions:
      return checkOptions(text);
    case TextForm::token:
      if (!hasBlank(bare)) return std::nullopt;
      return wrong("It holds a blank or a line break, which no token has.", "Paste the token as one word.");
  }
  return std::nullopt;
}

MaybeVerdict worse(MaybeVerdict a, MaybeVerdict b) {
  if (!a) return b;
  return b && a->severity == Severity::warning && b->severity == Severity::error ? b : a;
}

MaybeVerdict checkTextList(const Setting& setting, const PlistValue& raw, const PlistValue& value,
                           const FitsALabel& fitsALabel) {
  if (const auto* items = raw.array())
    for (const auto& item : *items)
      if (!item.string())
        return wrong(fmt::format("It holds {}, which is left out.", kindOf(item)), wantedForm(setting));
  MaybeVerdict worst;
  for (const auto& item : *value.array()) {
    const auto text = *item.string();
    worst = worse(std::move(worst), setting.form == TextForm::pathPart ? checkPathPart(text)
                                                                       : checkLabel(text, setting.form, fitsALabel));
  }
  return worst;
}

bool isAmong(SettingChoices choices, std::string_view text) {
  for (std::size_t i = 0; !choices(i).empty(); ++i)
    if (equalIgnoringCase(choices(i), text)) return true;
  return false;
}

MaybeVerdict checkDictionary(const Setting& setting, const PlistDict& entries) {
  for (const auto& [name, value] : entries) {
    if (!isAmong(setting.entries, name))
      return wrong(fmt::format("It names \"{}\", which is nothing it could be about.", shown(name)),
                   wantedForm(setting));
    if (!value.string() || !isAmong(setting.choices, *value.string()))
      return wrong(fmt::format("Its value for {} is none of {}.", name, joinedChoices(setting.choices)),
                   wantedForm(setting));
  }
  return std::nullopt;
}

// Of a value that counts.
MaybeVerdict checkCanonical(const Setting& setting, const PlistValue& raw, const PlistValue& value,
                            const FitsALabel& fitsALabel) {
  if (setting.type == SettingType::labelList || setting.type == SettingType::pathList)
    return checkTextList(setting, raw, value, fitsALabel);
  if (setting.type == SettingType::integerList && value.array()->size() < raw.array()->size())
    return wrong("It holds numbers that are out of range; they are left out.", wantedForm(setting));
  if (setting.type == SettingType::dictionary) return checkDictionary(setting, *value.dict());
  if (setting.isText()) return checkText(setting, *value.string(), fitsALabel);
  return std::nullopt;
}

MaybeVerdict checkSetting(const Setting& setting, const PlistValue& raw, const FitsALabel& fitsALabel) {
  if (!setting.manageable())
    return wrong("Corvane keeps this itself; a managed value would hide what it notes.", "Take the key out.");
  if (const auto value = canonical(setting, raw)) {
    if (auto verdict = checkCanonical(setting, raw, *value, fitsALabel)) return verdict;
    if (!setting.formerNameOf.empty())
      return doubtful(fmt::format("It is the former name of {}.", setting.formerNameOf),
                      fmt::format("Write {} instead.", setting.formerNameOf));
    return std::nullopt;
  }
  const bool mayBeBlank = setting.isText() || setting.type == SettingType::timeOfDay;
  if (mayBeBlank && raw.string() && trimmed(*raw.string()).empty())
    return doubtful("An empty text says nothing, so a user's own value or the default counts.",
                    "Give it a value, or take the key out.");
  return wrong(whyUseless(setting, raw), wantedForm(setting));
}

SettingFinding unknownKey(const std::string& key) {
  const auto nearest = nearestName(key, [](auto take) {
    for (const auto& setting : kSettings)
      if (setting.manageable()) take(setting.key);
  });
  const bool caseOnly = !nearest.empty() && equalIgnoringCase(nearest, key);
  return {
      Severity::error, key,
      caseOnly ? "There is no such key; capital letters count in a key." : "There is no such key.",
      nearest.empty() ? "See docs/preferences.md for all keys." : fmt::format("Write {}, if that is meant.", nearest)};
}

}  // namespace

SettingFindings checkSingleSettings(const PlistDict& managed, const FitsALabel& fitsALabel) {
  SettingFindings findings;
  for (const auto& [key, value] : managed) {
    const auto* setting = findSetting(key);
    if (setting == nullptr) {
      findings.push_back(unknownKey(key));
    } else if (auto verdict = checkSetting(*setting, value, fitsALabel)) {
      findings.push_back({verdict->severity, key, std::move(verdict->reason), std::move(verdict->fix)});
    }
  }
  return findings;
}

SettingFindings validateSettings(const PlistDict& managed, const FitsALabel& fitsALabel) {
  auto findings = checkSingleSettings(managed, fitsALabel);
  // What is wrong by itself takes no part in a combination.
  auto well = managed;
  for (const auto& finding : findings)
    if (finding.severity == Severity::error) well[finding.key] = PlistValue();
  for (auto& finding : checkCombinations(well)) findings.push_back(std::move(finding));
  std::ranges::stable_sort(findings, {}, &SettingFinding::severity);
  return findings;
}

}  // namespace corvane
