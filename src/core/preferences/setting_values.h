// From what a domain holds to the value in force: types, ranges, aliases and the order of the sources. Pure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "base/plist.h"
#include "core/preferences/configuration.h"
#include "core/preferences/setting.h"

namespace corvane {

// Where an effective value comes from.
enum class ValueSource { managed, user, fallback };
// "managed", "user" or "default".
[[nodiscard]] std::string_view sourceName(ValueSource source);

struct Domains {
  const PlistDict& managed;
  const PlistDict& user;
};

// A value that was passed over, for the log.
struct SettingProblem {
  std::string_view key;
  std::string what;
};

struct EffectiveValue {
  ValueSource source = ValueSource::fallback;
  std::optional<PlistValue> value;  // absent: the default, which is in the table
};

// "boolean", "integer", "string", "array", "dictionary", "date" or "data".
[[nodiscard]] std::string_view propertyListTypeName(SettingType type);

// The value in its canonical form: lists as lists of texts, enumerations by their raw string, flexible
// booleans as booleans. Absent when it has another type, is out of range or says nothing.
[[nodiscard]] std::optional<PlistValue> canonical(const Setting& setting, const PlistValue& value);

// Managed over user; values that are of no use fall through. `problems` may be null.
[[nodiscard]] EffectiveValue effectiveSetting(const Setting& setting, const Domains& domains,
                                              std::vector<SettingProblem>* problems);

struct LoadedConfiguration {
  CorvaneConfiguration config;
  std::vector<SettingProblem> problems;
};
[[nodiscard]] LoadedConfiguration configurationFrom(const Domains& domains);

// Keys of the table that fill a field of the configuration.
[[nodiscard]] bool fillsField(std::string_view key);

// Booleans, numbers (0 is false) and the texts true, yes, on, 1, false, no, off, 0 in any case.
[[nodiscard]] std::optional<bool> flexibleBool(const PlistValue& value);

// Dates as ISO 8601, data as its length in bytes.
[[nodiscard]] JsonValue jsonFrom(const PlistValue& value);
[[nodiscard]] JsonValue jsonFrom(const SettingDefault& fallback);

}  // namespace corvane
