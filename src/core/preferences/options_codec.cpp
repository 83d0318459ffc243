#include "core/preferences/options_codec.h"

#include <algorithm>
#include <charconv>

#include "core/preferences/installer_options.h"
#include "core/records/enumerations.h"

namespace corvane {
namespace {

using Pairs = std::map<std::string, std::string>;

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
Pairs split(std::string_view options) {
  Pairs pairs;
  while (true) {
    const auto start = options.find_first_not_of(kWhiteSpace);
    if (start == std::string_view::npos) return pairs;
    const auto end = std::min(options.find_first_of(kWhiteSpace, start), options.size());
    const auto token = options.substr(start, end - start);
    options.remove_prefix(end);
    if (const auto equals = token.find('='); equals != std::string_view::npos)
      pairs[std::string(token.substr(0, equals))] = token.substr(equals + 1);
  }
}

std::optional<std::string> take(Pairs& pairs, const std::string& key) {
  auto node = pairs.extract(key);
  return node ? std::optional(std::move(node.mapped())) : std::nullopt;
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc{} && end == text.data() + text.size();
  return whole ? std::optional(value) : std::nullopt;
}

// Blanks and tabs; line breaks stay.
std::string trimmedOfBlanks(std::string_view text) {
  const auto start = text.find_first_not_of(" \t");
  if (start == std::string_view::npos) return {};
  return std::string(text.substr(start, text.find_last_not_of(" \t") - start + 1));
}

void setOrRemove(Pairs& pairs, const std::string& key, std::string value) {
  if (value.empty())
    pairs.erase(key);
  else
    pairs[key] = std::move(value);
}

bool isShellName(std::string_view key) {
  const auto isStart = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
  const auto isPart = [&](char c) { return isStart(c) || (c >= '0' && c <= '9'); };
  return !key.empty() && isStart(key.front()) && std::ranges::all_of(key, isPart);
}

// Why a pair is not handed on; empty when it is.
std::string_view objection(std::string_view key, std::string_view value, OptionsSource source) {
  if (!isShellName(key)) return "not a name that the tool could use";
  const auto* option = findInstallerOption(key);
  if (option == nullptr) return source == OptionsSource::user ? "honoured only when a profile sets it" : "";
  if (option->number && !isPlainNumber(value)) return "its value is not a plain number";
  return {};
}

}  // namespace

InstallomatorOptions parseInstallomatorOptions(std::string_view options) {
  auto pairs = split(options);
  InstallomatorOptions result;
  if (auto value = take(pairs, "NOTIFY")) result.notify = std::move(*value);
  if (auto value = take(pairs, "BLOCKING_PROCESS_ACTION")) result.blockingProcessAction = std::move(*value);
  if (auto value = take(pairs, "LOGO")) {
    const bool isPath = value->find('/') != std::string::npos;
    result.logo = isPath ? "custom" : *value;
    if (isPath) result.logoCustomPath = std::move(*value);
  }
  if (const auto value = take(pairs, "IGNORE_APP_STORE_APPS"))
    result.ignoreAppStoreApps = equalIgnoringCase(*value, "yes");
  result.systemOwnerRoot = take(pairs, "SYSTEMOWNER") == "1";
  result.forceInstall = take(pairs, "INSTALL") == "force";
  if (const auto value = take(pairs, "REOPEN")) result.reopenApp = !equalIgnoringCase(*value, "no");
  if (const auto value = take(pairs, "INTERRUPT_DND")) result.interruptDND = !equalIgnoringCase(*value, "no");
  if (auto value = take(pairs, "IGNORE_DND_APPS")) result.ignoreDndApps = std::move(*value);
  if (auto value = take(pairs, "PROXY")) result.proxy = std::move(*value);
  if (const auto value = take(pairs, "PROMPT_TIMEOUT"))
    result.promptTimeout = wholeNumber(*value).value_or(result.promptTimeout);
  result.unknown = std::move(pairs);
  return result;
}

std::string composeInstallomatorOptions(const InstallomatorOptions& options) {
  auto pairs = options.unknown;
  pairs["NOTIFY"] = options.notify;
  pairs["BLOCKING_PROCESS_ACTION"] = options.blockingProcessAction;
  const auto path = trimmedOfBlanks(options.logoCustomPath);
  pairs["LOGO"] = options.logo != "custom" ? options.logo : path.empty() ? "appstore" : path;
  pairs["IGNORE_APP_STORE_APPS"] = options.ignoreAppStoreApps ? "yes" : "no";
  pairs["SYSTEMOWNER"] = options.systemOwnerRoot ? "1" : "0";
  setOrRemove(pairs, "INSTALL", options.forceInstall ? "force" : "");
  pairs["REOPEN"] = options.reopenApp ? "yes" : "no";
  pairs["INTERRUPT_DND"] = options.interruptDND ? "yes" : "no";
  setOrRemove(pairs, "IGNORE_DND_APPS", trimmedOfBlanks(options.ignoreDndApps));
  setOrRemove(pairs, "PROXY", trimmedOfBlanks(options.proxy));
  pairs["PROMPT_TIMEOUT"] = std::to_string(options.promptTimeout);

  std::vector<std::string> tokens;
  for (const auto& [key, value] : pairs) tokens.push_back(key + "=" + value);
  std::ranges::sort(tokens);
  std::string text;
  for (const auto& token : tokens) text += (text.empty() ? "" : " ") + token;
  return text;
}

std::optional<std::string> optionValue(std::string_view options, std::string_view key) {
  auto pairs = split(options);
  return take(pairs, std::string(key));
}

bool optionIs(std::string_view options, std::string_view key, std::string_view value) {
  const auto found = optionValue(options, key);
  return found && equalIgnoringCase(*found, value);
}

OptionArguments optionArguments(std::string_view options, OptionsSource source) {
  OptionArguments result;
  for (const auto& [key, value] : split(options)) {
    auto reason = objection(key, value, source);
    auto argument = quotedAssignment(key, value);
    if (reason.empty() && !argument) reason = "its value cannot be handed on";
    if (reason.empty())
      result.arguments.push_back(std::move(*argument));
    else
      result.leftOut.push_back({key, std::string(reason)});
  }
  return result;
}

std::optional<std::string> quotedAssignment(std::string_view key, std::string_view value) {
  if (!isShellName(key) || value.find_first_of(std::string_view("\0\n\r", 3)) != std::string_view::npos)
    return std::nullopt;
  std::string text(key);
  text += "='";
  for (const char c : value) {
    if (c == '\'')
      text += "'\\''";
    else
      text += c;
  }
  return text + "'";
}

}  // namespace corvane
