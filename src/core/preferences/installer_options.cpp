#include "core/preferences/installer_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>

#include "base/ascii.h"
#include "core/preferences/nearest_name.h"
#include "core/preferences/options_codec.h"

namespace corvane {
namespace {

using Kind = InstallerOption::Kind;

constexpr auto kNotify = std::to_array<std::string_view>({"success", "silent", "all"});
constexpr auto kBlocking = std::to_array<std::string_view>({"ignore", "quit", "quit_kill", "silent_fail", "prompt_user",
                                                            "prompt_user_then_kill", "prompt_user_loop", "tell_user",
                                                            "tell_user_then_kill", "kill"});
constexpr auto kLogos = std::to_array<std::string_view>(
    {"appstore", "jamf", "mosyleb", "mosylem", "addigy", "microsoft", "ws1", "filewave", "kandji"});
constexpr auto kYesNo = std::to_array<std::string_view>({"yes", "no"});
constexpr auto kZeroOne = std::to_array<std::string_view>({"0", "1"});
constexpr auto kForce = std::to_array<std::string_view>({"force"});

constexpr auto kOptions = std::to_array<InstallerOption>({{"NOTIFY", Kind::choice, kNotify},
                                                          {"BLOCKING_PROCESS_ACTION", Kind::choice, kBlocking},
                                                          {"LOGO", Kind::choiceOrPath, kLogos},
                                                          {"IGNORE_APP_STORE_APPS", Kind::choice, kYesNo},
                                                          {"SYSTEMOWNER", Kind::choice, kZeroOne, true},
                                                          {"INSTALL", Kind::choice, kForce},
                                                          {"REOPEN", Kind::choice, kYesNo},
                                                          {"INTERRUPT_DND", Kind::choice, kYesNo},
                                                          {"IGNORE_DND_APPS"},
                                                          {"PROXY"},
                                                          {"PROMPT_TIMEOUT", Kind::digits, {}, true}});

constexpr std::size_t kMostDigits = 9;

std::vector<std::string_view> tokensOf(std::string_view options) {
  constexpr std::string_view kBlanks = " \t\n\v\f\r";
  std::vector<std::string_view> tokens;
  while (true) {
    const auto start = options.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return tokens;
    const auto end = std::min(options.find_first_of(kBlanks, start), options.size());
    tokens.push_back(options.substr(start, end - start));
    options.remove_prefix(end);
  }
}

// Tokens may hold a proxy's password: of one that is not understood only the place is told.
OptionTrouble unknownOption(std::string_view key) {
  const auto known = nearestName(key, [](auto take) {
    for (const auto& option : kOptions) take(option.key);
  });
  if (!known.empty()) return {fmt::format("The tool knows no {}; {} is meant, perhaps.", shown(key), known)};
  return {fmt::format("{} is no key of the options table; it is handed on to the tool as it is, and may replace what a "
                      "label says.",
                      shown(key)),
          true};
}

}  // namespace

bool isPlainNumber(std::string_view value) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return !value.empty() && value.size() <= kMostDigits && std::ranges::all_of(value, isDigit);
}

const InstallerOption* findInstallerOption(std::string_view key) {
  const auto found = std::ranges::find(kOptions, key, &InstallerOption::key);
  return found == kOptions.end() ? nullptr : &*found;
}

bool takesValue(const InstallerOption& option, std::string_view value) {
  switch (option.kind) {
    case Kind::text:
      return true;
    case Kind::digits:
      return isPlainNumber(value);
    case Kind::choiceOrPath:
      if (value.find('/') != std::string_view::npos) return true;
      [[fallthrough]];
    case Kind::choice:
      // Yes and no are read in any case.
      return std::ranges::any_of(option.values, [&](std::string_view choice) {
        return option.values.data() == kYesNo.data() ? equalIgnoringCase(choice, value) : choice == value;
      });
  }
  return false;
}

std::vector<OptionTrouble> optionTroubles(std::string_view options) {
  std::vector<OptionTrouble> troubles;
  std::set<std::string_view> keys;
  std::size_t place = 0;
  for (const auto token : tokensOf(options)) {
    ++place;
    const auto equals = token.find('=');
    if (equals == std::string_view::npos) {
      troubles.push_back({fmt::format(
          "Its word {} has no \"=\" and is dropped; nothing can be quoted, so a value ends at a blank.", place)});
      continue;
    }
    const auto key = token.substr(0, equals);
    const auto value = token.substr(equals + 1);
    if (!keys.insert(key).second)
      troubles.push_back({fmt::format("{} stands more than once; the last one counts.", shown(key)), true});
    if (!quotedAssignment(key, value)) {
      troubles.push_back({fmt::format("{} is not a name that the tool could use.", shown(key))});
    } else if (const auto* option = findInstallerOption(key); option == nullptr) {
      troubles.push_back(unknownOption(key));
    } else if (!takesValue(*option, value)) {
      troubles.push_back({option->kind == Kind::digits
                              ? fmt::format("{} is not a plain number of at most {} digits.", key, kMostDigits)
                              : fmt::format("{} is none of {}{}.", key, fmt::join(option->values, ", "),
                                            option->kind == Kind::choiceOrPath ? ", and no path" : "")});
    }
  }
  return troubles;
}

}  // namespace corvane
