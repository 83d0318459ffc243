// What is known of one preference key before any value is read. No values, no files here.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "core/records/enumerations.h"

namespace corvane {

enum class SettingType {
  boolean,
  flexibleBoolean,  // may also arrive as a number or a text ("true", "yes", "on", "1")
  integer,
  optionalInteger,  // absent means that the limit is off
  text,
  optionalText,  // absent and empty are the same
  timeOfDay,     // "HH:mm"; absent and empty are the same
  enumeration,
  labelList,  // a list of texts, or one text split at white space
  pathList,   // a list of texts, or one text split at line breaks
  integerList,
  dictionary,
  date,
  data
};

// Where a value may come from. The managed domain always wins.
enum class SettingAccess {
  user,     // the settings window and the command line write it; a profile may overlay it
  managed,  // a profile or the default; a value in the user's domain is ignored and told to the log once
  state     // kept by the program itself; not meant to be set by people
};

// The groups of settings that the settings window greys out together.
enum class ManagedGroup {
  none,
  installomator,
  gitHubAPI,
  installomatorAssembly,
  supportInfo,
  deferralSettings,
  businessHours,
  labels,
  webhooks,
  debugSettings,
  helperBehavior,
  backgroundPatch,
  discoveryFilters,
  versionComparison,
  updateAllErrorPolicy,
  selfUpdate
};

using SettingDefault =
    std::variant<std::monostate, bool, std::int64_t, std::string_view, std::span<const std::int64_t>>;

// Inclusive. A number outside counts as absent, so the default applies; outside it in a list, it is left out, also
// where none is left then. Either is told to the log once.
struct SettingRange {
  std::int64_t least = std::numeric_limits<std::int64_t>::min();
  std::int64_t most = std::numeric_limits<std::int64_t>::max();
  [[nodiscard]] constexpr bool contains(std::int64_t value) const { return value >= least && value <= most; }
  [[nodiscard]] constexpr bool limited() const { return *this != SettingRange{}; }
  friend constexpr bool operator==(const SettingRange&, const SettingRange&) = default;
};

// The raw string of the case at `index`, empty behind the last one.
using SettingChoices = std::string_view (*)(std::size_t index);

template <class E>
constexpr std::string_view rawNameAt(std::size_t index) {
  return index < CaseNames<E>::all.size() ? CaseNames<E>::all[index].raw : std::string_view{};
}

// What a text, or each text of a list, has to be beyond being one. Reading takes any text; what was meant is for the
// documents and for whoever checks a profile.
enum class TextForm {
  free,
  webAddress,     // http or https
  secureAddress,  // https, or http to this machine
  path,           // absolute
  pathPart,       // a piece of a path, in any case
  mailAddress,
  label,         // the exact name of a label
  labelPattern,  // a label's name, or one with the wildcards * and ?
  installerOptions,
  token  // one word
};

struct Setting {
  std::string_view key;
  int saved = 0;                // place in the order in which the settings window saves; 0: it does not write the key
  bool emptyIsRemoved = false;  // it removes the key rather than storing an empty value
  SettingType type = SettingType::text;
  SettingAccess access = SettingAccess::user;
  SettingDefault fallback = {};  // monostate: absent, empty text, empty list
  SettingRange range = {};
  SettingChoices choices = nullptr;  // of enumerations, and of a dictionary's values
  SettingChoices entries = nullptr;  // of dictionaries: the keys in them
  ManagedGroup group = ManagedGroup::none;
  bool neverLogged = false;  // its value stays out of the log and of every listing
  bool redacted = false;     // its value is blacked out in diagnostic bundles
  TextForm form = TextForm::free;
  std::string_view formerNameOf = {};  // the key that took its place; it counts where that one is not set
  bool profileMaySet = false;          // of state: a profile may set it all the same
  std::string_view title = {};         // empty: the words of the key
  std::string_view meaning;            // one sentence for administrators

  // Whether a profile may hold the key.
  [[nodiscard]] constexpr bool manageable() const { return access != SettingAccess::state || profileMaySet; }
  // Lists, dictionaries, dates and data have no text of their own.
  [[nodiscard]] constexpr bool isText() const { return type == SettingType::text || type == SettingType::optionalText; }
};

}  // namespace corvane
