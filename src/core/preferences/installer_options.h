// The keys of the Installomator options string that the program knows, and what their values may be.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

struct InstallerOption {
  enum class Kind {
    choice,        // one of `values`
    choiceOrPath,  // one of `values`, or a path
    digits,
    text
  };
  std::string_view key;
  Kind kind = Kind::text;
  std::span<const std::string_view> values = {};
  bool number = false;  // the tool compares it as one, and zsh evaluates what stands there, so only digits may
};

// Few digits and nothing else.
[[nodiscard]] bool isPlainNumber(std::string_view value);

// Null for a key that the table does not hold.
[[nodiscard]] const InstallerOption* findInstallerOption(std::string_view key);
[[nodiscard]] bool takesValue(const InstallerOption& option, std::string_view value);

// What an options string cannot mean, a sentence each; `harmless` ones are handed on to the tool nevertheless.
struct OptionTrouble {
  std::string text;
  bool harmless = false;
};
[[nodiscard]] std::vector<OptionTrouble> optionTroubles(std::string_view options);

}  // namespace corvane
