// docs/preferences.schema.json.
#include <algorithm>

#include "core/places.h"
#include "core/preferences/setting_values.h"
#include "core/preferences/settings_table.h"

namespace corvane {
namespace {

// Hours of one digit read too.
constexpr std::string_view kTimePattern = "^\\s*(([01]?[0-9]|2[0-3]):[0-5][0-9])?\\s*$";

JsonArray namesOf(SettingChoices choices) {
  JsonArray names;
  for (std::size_t i = 0; !choices(i).empty(); ++i) names.emplace_back(choices(i));
  return names;
}

JsonObject typed(std::string_view type) { return {{"type", type}}; }

JsonObject integerSchema(const Setting& setting) {
  auto schema = typed("integer");
  if (setting.range.limited()) {
    schema.set("minimum", setting.range.least);
    schema.set("maximum", setting.range.most);
  }
  return schema;
}

JsonObject textSchema(const Setting& setting) {
  auto schema = typed("string");
  if (setting.form == TextForm::webAddress || setting.form == TextForm::secureAddress) schema.set("format", "uri");
  if (setting.form == TextForm::mailAddress) schema.set("format", "email");
  if (setting.form == TextForm::token) schema.set("pattern", "^\\S*$");
  return schema;
}

// One text stands for the list that it is split into.
JsonObject textListSchema() {
  return {{"anyOf", JsonArray{JsonObject{{"type", "array"}, {"items", typed("string")}}, typed("string")}}};
}

JsonObject dictionarySchema(const Setting& setting) {
  JsonObject entries;
  for (const auto& entry : namesOf(setting.entries))
    entries.set(std::string(*entry.string()), JsonObject{{"enum", namesOf(setting.choices)}});
  return {{"type", "object"}, {"properties", std::move(entries)}, {"additionalProperties", false}};
}

JsonObject typeSchema(const Setting& setting) {
  switch (setting.type) {
    case SettingType::boolean:
      return typed("boolean");
    case SettingType::flexibleBoolean:
      return {{"type", JsonArray{"boolean", "number", "string"}}};
    case SettingType::integer:
    case SettingType::optionalInteger:
      return integerSchema(setting);
    case SettingType::text:
    case SettingType::optionalText:
      return textSchema(setting);
    case SettingType::enumeration:
      return {{"enum", namesOf(setting.choices)}};
    case SettingType::timeOfDay:
      return {{"type", "string"}, {"pattern", kTimePattern}};
    case SettingType::labelList:
    case SettingType::pathList:
      return textListSchema();
    case SettingType::integerList:
      return {{"type", "array"}, {"items", integerSchema(setting)}};
    case SettingType::dictionary:
      return dictionarySchema(setting);
    case SettingType::date:
      return {{"type", "string"}, {"format", "date-time"}};
    case SettingType::data:
      return typed("string");
  }
  return {};
}

JsonObject settingSchema(const Setting& setting) {
  JsonObject schema{{"title", titleOf(setting)}, {"description", setting.meaning}};
  const auto type = typeSchema(setting);
  for (const auto& [name, value] : type.entries()) schema.set(name, value);
  if (!std::holds_alternative<std::monostate>(setting.fallback)) schema.set("default", jsonFrom(setting.fallback));
  if (!setting.formerNameOf.empty()) schema.set("deprecated", true);
  return schema;
}

}  // namespace

std::string titleOf(const Setting& setting) {
  if (!setting.title.empty()) return std::string(setting.title);
  const auto isUpper = [](char c) { return c >= 'A' && c <= 'Z'; };
  std::string words;
  for (std::size_t i = 0; i < setting.key.size(); ++i) {
    const bool begins = i > 0 && isUpper(setting.key[i]) &&
                        (!isUpper(setting.key[i - 1]) || (i + 1 < setting.key.size() && !isUpper(setting.key[i + 1])));
    if (begins) words += ' ';
    words += setting.key[i];
  }
  return words;
}

std::string preferencesSchema() {
  JsonObject properties;
  for (const auto& setting : kSettings)
    if (setting.manageable()) properties.set(std::string(setting.key), settingSchema(setting));
  return writeJsonPretty(JsonObject{
             {"$schema", "https://json-schema.org/draft/2020-12/schema"},
             {"title", std::string(CorvaneConstants::preferenceDomain) + ", the managed domain"},
             {"description",
              "What a configuration profile may set. Made from the program's own table of settings. Values of a fixed "
              "set are read in any case; corvanectl validate also checks what a schema cannot."},
             {"type", "object"},
             {"properties", std::move(properties)},
             {"additionalProperties", false}}) +
         "\n";
}

}  // namespace corvane
