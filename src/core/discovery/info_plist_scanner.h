// A few strings from the top level of a property list, without building the rest of it. Looks at usual
// lists only; whatever is out of the ordinary is left to the whole parser.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace corvane {

// One wanted string of the top level.
struct WantedString {
  std::string_view key;
  std::optional<std::string>* value;
};

// Sets the values whose keys are there as strings, and tells whether the list was usual enough to be sure. False for
// all that is damaged or merely unusual (another encoding, CDATA, entities by number, letters outside
// ASCII in a wanted string, a key that comes twice): the values then mean nothing. Any thread.
[[nodiscard]] bool scanPlistStrings(std::string_view bytes, std::span<const WantedString> wanted);

}  // namespace corvane
