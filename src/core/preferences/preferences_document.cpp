#include <fmt/format.h>

#include "core/preferences/setting_values.h"
#include "core/preferences/settings_table.h"

namespace corvane {
namespace {

std::string_view typeText(SettingType type) {
  switch (type) {
    case SettingType::boolean:
      return "boolean";
    case SettingType::flexibleBoolean:
      return "boolean, number or text";
    case SettingType::integer:
    case SettingType::optionalInteger:
      return "integer";
    case SettingType::text:
    case SettingType::optionalText:
      return "text";
    case SettingType::enumeration:
      return "one of";
    case SettingType::timeOfDay:
      return "time of day";
    case SettingType::labelList:
    case SettingType::pathList:
      return "list of texts";
    case SettingType::integerList:
      return "list of integers";
    case SettingType::dictionary:
      return "dictionary of texts";
    case SettingType::date:
      return "date";
    case SettingType::data:
      return "data";
  }
  return {};
}

std::string defaultTextOf(const Setting& setting) {
  if (!std::holds_alternative<std::monostate>(setting.fallback))
    return "`" + writeJson(jsonFrom(setting.fallback)) + "`";
  switch (setting.type) {
    case SettingType::text:
    case SettingType::labelList:
    case SettingType::pathList:
      return "empty";
    default:
      return "absent";
  }
}

std::string rangeText(const Setting& setting) {
  if (setting.range.limited()) return fmt::format("{} to {}", setting.range.least, setting.range.most);
  std::string text;
  for (std::size_t i = 0; setting.choices && !setting.choices(i).empty(); ++i)
    text += fmt::format("{}`{}`", i == 0 ? "" : ", ", setting.choices(i));
  return text;
}

std::string meaningText(const Setting& setting) {
  std::string text(setting.meaning);
  if (setting.neverLogged) text += " Never written to a log or a listing.";
  if (setting.redacted) text += " Blacked out in diagnostic bundles.";
  return text;
}

std::string section(std::string_view title, std::string_view introduction, SettingAccess access) {
  auto text =
      fmt::format("\n## {}\n\n{}\n\n| Key | Type | Default | Range or values | Meaning |\n|---|---|---|---|---|\n",
                  title, introduction);
  for (const auto& setting : kSettings)
    if (setting.access == access)
      text += fmt::format("| `{}` | {} | {} | {} | {} |\n", setting.key, typeText(setting.type), defaultTextOf(setting),
                          rangeText(setting), meaningText(setting));
  return text;
}

}  // namespace

std::string preferencesDocument() {
  return "# Preferences\n\n"
         "Corvane keeps its settings in the preference domain `org.corvane.Corvane`: the user's own file under\n"
         "`~/Library/Preferences`, and over it the managed file that a configuration profile puts under\n"
         "`/Library/Managed Preferences`. A managed value always wins. A value of another type than the one given "
         "here,\n"
         "or outside its range, counts as absent and is told to the log once. Values of a fixed set are read in any "
         "case.\n"
         "Label lists and path lists may also be one text, labels separated by blanks, paths by line breaks.\n"
         "This page is made from the program's own table of settings.\n" +
         section("Settings",
                 "Set by the user (settings window or `defaults`) or by a profile, which makes the control read-only.",
                 SettingAccess::user) +
         section("Settings that only a profile sets",
                 "A value in the user's domain is ignored, and the log says so once.", SettingAccess::managed) +
         section("State",
                 "Kept by the program in the user's domain. Listed so that an administrator knows what is there; not "
                 "meant\n"
                 "to be set.",
                 SettingAccess::state);
}

}  // namespace corvane
