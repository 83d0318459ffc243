#include "core/preferences/setting_values.h"

#include <algorithm>
#include <array>

#include "base/time_of_day.h"

namespace corvane {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kLineBreaks = "\n\r";

// The rows that are former names of others.
constexpr bool isFormer(const Setting& setting) { return !setting.formerNameOf.empty(); }
constexpr auto kFormer = [] {
  std::array<const Setting*, std::size_t(std::ranges::count_if(kSettings, isFormer))> rows{};
  std::size_t next = 0;
  for (const auto& setting : kSettings)
    if (isFormer(setting)) rows[next++] = &setting;
  return rows;
}();

bool isBlank(std::string_view text) { return text.find_first_not_of(kWhiteSpace) == std::string_view::npos; }

void appendPieces(PlistArray& pieces, std::string_view text, std::string_view separators) {
  while (true) {
    const auto start = text.find_first_not_of(separators);
    if (start == std::string_view::npos) return;
    const auto end = std::min(text.find_first_of(separators, start), text.size());
    pieces.emplace_back(text.substr(start, end - start));
    text.remove_prefix(end);
  }
}

// A profile may give such a list as one text; elements that are no texts are left out.
std::optional<PlistValue> textList(const PlistValue& value, std::string_view separators) {
  PlistArray texts;
  if (const auto text = value.string()) {
    appendPieces(texts, *text, separators);
  } else if (const auto* items = value.array()) {
    for (const auto& item : *items)
      if (const auto piece = item.string()) appendPieces(texts, *piece, separators);
  } else {
    return std::nullopt;
  }
  return texts;
}

std::optional<PlistValue> integerList(const Setting& setting, const PlistValue& value) {
  if (!value.array()) return std::nullopt;
  const auto whole = [](const PlistValue& item) { return item.integer().has_value(); };
  if (!std::ranges::all_of(*value.array(), whole)) return std::nullopt;
  PlistArray within;
  std::ranges::copy_if(*value.array(), std::back_inserter(within),
                       [&](const PlistValue& item) { return setting.range.contains(*item.integer()); });
  return within;
}

std::optional<PlistValue> integerWithin(const Setting& setting, const PlistValue& value) {
  const auto number = value.integer();
  return number && setting.range.contains(*number) ? std::optional(value) : std::nullopt;
}

// A blank text says nothing where an absent value means something else.
std::optional<PlistValue> textOf(const Setting& setting, const PlistValue& value) {
  const auto text = value.string();
  const bool blankIsAbsent =
      setting.type == SettingType::optionalText || std::holds_alternative<std::string_view>(setting.fallback);
  return text && !(blankIsAbsent && isBlank(*text)) ? std::optional(value) : std::nullopt;
}

std::optional<PlistValue> timeOf(const PlistValue& value) {
  const auto text = value.string();
  return text && minutesOfDay(*text) ? std::optional(value) : std::nullopt;
}

std::optional<PlistValue> caseOf(const Setting& setting, const PlistValue& value) {
  const auto text = value.string();
  if (!text || !setting.choices) return std::nullopt;
  for (std::size_t i = 0; !setting.choices(i).empty(); ++i)
    if (equalIgnoringCase(setting.choices(i), *text)) return PlistValue(setting.choices(i));
  return std::nullopt;
}

template <class T>
std::optional<PlistValue> when(const std::optional<T>& present, const PlistValue& value) {
  return present ? std::optional(value) : std::nullopt;
}

bool saysNothing(const Setting& setting, const PlistValue& value) {
  return value.string() && isBlank(*value.string()) && setting.type != SettingType::enumeration;
}

void note(std::vector<SettingProblem>* problems, std::string_view key, std::string_view what) {
  if (problems) problems->push_back({key, std::string(what)});
}

std::optional<PlistValue> usable(const Setting& setting, std::string_view key, const PlistDict& domain,
                                 std::string_view domainName, std::vector<SettingProblem>* problems) {
  const auto found = domain.find(key);
  if (found == domain.end()) return std::nullopt;
  auto value = canonical(setting, found->second);
  if (!value && !saysNothing(setting, found->second))
    note(problems, key,
         "The " + std::string(domainName) + " value of " + std::string(key) +
             (setting.type == SettingType::timeOfDay
                  ? ", " + writeJson(jsonFrom(found->second)) + ", is no time of day, \"HH:mm\", and is ignored."
                  : " has a wrong type or is out of range and is ignored."));
  if (value && setting.type == SettingType::integerList && value->array()->size() < found->second.array()->size())
    note(problems, key,
         "The " + std::string(domainName) + " value of " + std::string(key) +
             " holds numbers that are out of range; they are left out.");
  return value;
}

// Null where a key never had another name.
const Setting* formerOf(std::string_view key) {
  const auto found = std::ranges::find(kFormer, key, &Setting::formerNameOf);
  return found == kFormer.end() ? nullptr : *found;
}

}  // namespace

std::optional<bool> flexibleBool(const PlistValue& value) {
  if (const auto flag = value.boolean()) return flag;
  if (const auto number = value.number()) return *number != 0;
  const auto text = value.string();
  if (!text) return std::nullopt;
  const auto is = [&](std::string_view word) { return equalIgnoringCase(*text, word); };
  if (std::ranges::any_of(std::array{"true"sv, "yes"sv, "on"sv, "1"sv}, is)) return true;
  if (std::ranges::any_of(std::array{"false"sv, "no"sv, "off"sv, "0"sv}, is)) return false;
  return std::nullopt;
}

std::optional<PlistValue> canonical(const Setting& setting, const PlistValue& value) {
  switch (setting.type) {
    case SettingType::boolean:
      return when(value.boolean(), value);
    case SettingType::flexibleBoolean:
      if (const auto flag = flexibleBool(value)) return PlistValue(*flag);
      return std::nullopt;
    case SettingType::integer:
    case SettingType::optionalInteger:
      return integerWithin(setting, value);
    case SettingType::text:
    case SettingType::optionalText:
      return textOf(setting, value);
    case SettingType::timeOfDay:
      return timeOf(value);
    case SettingType::enumeration:
      return caseOf(setting, value);
    case SettingType::labelList:
      return textList(value, kWhiteSpace);
    case SettingType::pathList:
      return textList(value, kLineBreaks);
    case SettingType::integerList:
      return integerList(setting, value);
    case SettingType::dictionary:
      return value.dict() ? std::optional(value) : std::nullopt;
    case SettingType::date:
      return when(value.date(), value);
    case SettingType::data:
      return when(value.data(), value);
  }
  return std::nullopt;
}

EffectiveValue effectiveSetting(const Setting& setting, const Domains& domains, std::vector<SettingProblem>* problems) {
  const auto* former = formerOf(setting.key);
  if (auto value = usable(setting, setting.key, domains.managed, "managed", problems))
    return {ValueSource::managed, std::move(value)};
  if (former)
    if (auto value = usable(setting, former->key, domains.managed, "managed", problems))
      return {ValueSource::managed, std::move(value)};
  if (setting.access == SettingAccess::managed) {
    if (domains.user.contains(setting.key))
      note(problems, setting.key, std::string(setting.key) + " counts only in a profile; the user's value is ignored.");
    return {};
  }
  if (auto value = usable(setting, setting.key, domains.user, "user's", problems))
    return {ValueSource::user, std::move(value)};
  if (former && former->access == SettingAccess::user)
    if (auto value = usable(setting, former->key, domains.user, "user's", problems))
      return {ValueSource::user, std::move(value)};
  return {};
}

JsonValue jsonFrom(const PlistValue& value) {
  if (const auto flag = value.boolean()) return *flag;
  if (const auto number = value.integer()) return *number;
  if (const auto number = value.number()) return *number;
  if (const auto text = value.string()) return *text;
  if (const auto bytes = value.data()) return bytes->size();
  if (const auto date = value.date()) return iso8601Utc(*date);
  if (const auto* items = value.array()) {
    JsonArray list;
    for (const auto& item : *items) list.push_back(jsonFrom(item));
    return list;
  }
  if (const auto* entries = value.dict()) {
    JsonObject object;
    for (const auto& [key, item] : *entries) object.set(key, jsonFrom(item));
    return object;
  }
  return nullptr;
}

JsonValue jsonFrom(const SettingDefault& fallback) {
  if (const auto* flag = std::get_if<bool>(&fallback)) return *flag;
  if (const auto* number = std::get_if<std::int64_t>(&fallback)) return *number;
  if (const auto* text = std::get_if<std::string_view>(&fallback)) return *text;
  if (const auto* numbers = std::get_if<std::span<const std::int64_t>>(&fallback))
    return JsonArray(numbers->begin(), numbers->end());
  return nullptr;
}

std::string_view propertyListTypeName(SettingType type) {
  switch (type) {
    case SettingType::boolean:
    case SettingType::flexibleBoolean:
      return "boolean";
    case SettingType::integer:
    case SettingType::optionalInteger:
      return "integer";
    case SettingType::text:
    case SettingType::optionalText:
    case SettingType::timeOfDay:
    case SettingType::enumeration:
      return "string";
    case SettingType::labelList:
    case SettingType::pathList:
    case SettingType::integerList:
      return "array";
    case SettingType::dictionary:
      return "dictionary";
    case SettingType::date:
      return "date";
    case SettingType::data:
      break;
  }
  return "data";
}

std::string_view sourceName(ValueSource source) {
  switch (source) {
    case ValueSource::managed:
      return "managed";
    case ValueSource::user:
      return "user";
    case ValueSource::fallback:
      break;
  }
  return "default";
}

}  // namespace corvane
