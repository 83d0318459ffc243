// docs/org.corvane.Corvane.manifest.plist.
#include "base/plist.h"
#include "core/places.h"
#include "core/preferences/setting_values.h"
#include "core/preferences/settings_table.h"

namespace corvane {
namespace {

constexpr std::string_view kTimeFormat = "^([01]?[0-9]|2[0-3]):[0-5][0-9]$";

PlistArray namesOf(SettingChoices choices) {
  PlistArray names;
  for (std::size_t i = 0; !choices(i).empty(); ++i) names.emplace_back(choices(i));
  return names;
}

PlistValue defaultOf(const SettingDefault& fallback) {
  if (const auto* flag = std::get_if<bool>(&fallback)) return *flag;
  if (const auto* number = std::get_if<std::int64_t>(&fallback)) return *number;
  if (const auto* text = std::get_if<std::string_view>(&fallback)) return *text;
  if (const auto* numbers = std::get_if<std::span<const std::int64_t>>(&fallback))
    return PlistArray(numbers->begin(), numbers->end());
  return {};
}

void limit(PlistDict& entry, const SettingRange& range) {
  if (!range.limited()) return;
  entry["pfm_range_min"] = range.least;
  entry["pfm_range_max"] = range.most;
}

// What the elements of a list or a dictionary are.
PlistArray elementsOf(const Setting& setting) {
  if (setting.type == SettingType::dictionary) {
    PlistArray entries;
    for (const auto& name : namesOf(setting.entries))
      entries.push_back(PlistDict{{"pfm_name", name},
                                  {"pfm_title", name},
                                  {"pfm_type", "string"},
                                  {"pfm_range_list", namesOf(setting.choices)}});
    return entries;
  }
  const bool numbers = setting.type == SettingType::integerList;
  PlistDict item{{"pfm_name", "Item"}, {"pfm_title", titleOf(setting)}, {"pfm_type", numbers ? "integer" : "string"}};
  limit(item, setting.range);
  return {std::move(item)};
}

PlistDict entryOf(const Setting& setting) {
  PlistDict entry{{"pfm_name", setting.key},
                  {"pfm_title", titleOf(setting)},
                  {"pfm_description", setting.meaning},
                  {"pfm_type", propertyListTypeName(setting.type)}};
  if (auto fallback = defaultOf(setting.fallback); fallback != PlistValue()) entry["pfm_default"] = std::move(fallback);
  if (setting.neverLogged) entry["pfm_sensitive"] = true;
  if (setting.type == SettingType::timeOfDay) entry["pfm_format"] = kTimeFormat;
  if (setting.type == SettingType::enumeration) entry["pfm_range_list"] = namesOf(setting.choices);
  const auto type = propertyListTypeName(setting.type);
  if (type == "array" || type == "dictionary")
    entry["pfm_subkeys"] = elementsOf(setting);
  else
    limit(entry, setting.range);
  return entry;
}

// What every payload of a profile has beside its settings.
struct PayloadKey {
  std::string_view name, title, type, description;
};
constexpr PayloadKey kPayloadKeys[] = {
    {"PayloadDescription", "Payload Description", "string", "What the payload is for."},
    {"PayloadDisplayName", "Payload Display Name", "string", "The payload's name for people."},
    {"PayloadIdentifier", "Payload Identifier", "string", "The payload's own identifier, in the form of a domain."},
    {"PayloadType", "Payload Type", "string", "The preference domain."},
    {"PayloadUUID", "Payload UUID", "string", "Unique for each payload."},
    {"PayloadVersion", "Payload Version", "integer", "The version of the payload's form."},
    {"PayloadOrganization", "Payload Organization", "string", "Who deploys the payload."}};

PlistDict entryOf(const PayloadKey& key) {
  PlistDict entry{
      {"pfm_name", key.name}, {"pfm_title", key.title}, {"pfm_description", key.description}, {"pfm_type", key.type}};
  if (key.name == "PayloadType" || key.name == "PayloadIdentifier")
    entry["pfm_default"] = CorvaneConstants::preferenceDomain;
  if (key.name == "PayloadVersion") entry["pfm_default"] = 1;
  if (key.name != "PayloadOrganization" && key.name != "PayloadDescription") entry["pfm_require"] = "always";
  return entry;
}

}  // namespace

std::string preferencesManifest() {
  PlistArray keys;
  for (const auto& key : kPayloadKeys) keys.push_back(entryOf(key));
  for (const auto& setting : kSettings)
    if (setting.manageable()) keys.push_back(entryOf(setting));
  const PlistDict manifest{{"pfm_title", "Corvane"},
                           {"pfm_description", "Settings of Corvane."},
                           {"pfm_domain", CorvaneConstants::preferenceDomain},
                           {"pfm_format_version", 1},
                           {"pfm_version", 1},
                           {"pfm_platforms", PlistArray{"macOS"}},
                           {"pfm_targets", PlistArray{"system", "user"}},
                           {"pfm_unique", true},
                           {"pfm_interaction", "combined"},
                           {"pfm_subkeys", std::move(keys)}};
  return writePlist(manifest, PlistFormat::xml).value_or("");
}

}  // namespace corvane
