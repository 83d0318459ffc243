#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "base/ascii.h"
#include "base/time_of_day.h"
#include "presentation/settings_parts.h"

namespace corvane {
namespace {

using Unit = StepperRule::Unit;

constexpr auto kSteppers = std::to_array<StepperRule>({
    {.key = "PROMPT_TIMEOUT", .range = {60, 604'800}, .step = 60, .unit = Unit::seconds},
    {.key = "DeferralTimerDefault", .range = {15, 1440}, .step = 15, .unit = Unit::minutes},
    {.key = "DeferralTimerFocus", .range = {1, 480}, .step = 5, .unit = Unit::minutes},
    {.key = "DeadlineCountFocus", .range = {1, 10}, .unit = Unit::deferrals, .hasOffState = true},
    {.key = "DeadlineDaysFocus", .range = {1, 30}, .unit = Unit::days, .hasOffState = true},
    {.key = "DeadlineCountHard", .range = {1, 10}, .unit = Unit::deferrals, .hasOffState = true},
    {.key = "DeadlineDaysHard", .range = {1, 30}, .unit = Unit::days, .hasOffState = true},
    {.key = "DaysUntilReset", .range = {1, 30}, .unit = Unit::days},
    {.key = "BackgroundPatchClosedAppsIntervalHours", .range = {1, 24}, .unit = Unit::hours},
    {.key = SettingsKeys::focusCount, .range = {0, 50}},
    {.key = SettingsKeys::hardCount, .range = {0, 50}},
});
constexpr std::int64_t kMostStepsAtOnce = 1000;

bool isOneOf(char sign, std::string_view more) {
  return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9') ||
         more.find(sign) != std::string_view::npos;
}

// The first item that can be no label, or no pattern of labels.
std::optional<std::string> firstWrongLabel(const PlistValue& value) {
  if (const auto* items = value.array())
    for (const auto& item : *items) {
      const auto text = item.string().value_or("");
      if (!std::ranges::all_of(text, [](char sign) { return isOneOf(sign, "_-.+*?[]"); })) return std::string(text);
    }
  return std::nullopt;
}

std::string timeProblem(const SettingsViewModel& model, std::string_view key) {
  const auto& config = model.config;
  if (!minutesOfDay(model.text(key)))
    return localized("This is no time. Enter hours and minutes, for example 09:00; until then nothing is held.");
  if (key == "BusinessHoursEndTime" && model.holdsBusinessHours() &&
      minutesOfDay(*config.businessHoursStartTime) == minutesOfDay(*config.businessHoursEndTime))
    return localized("Start and end are the same, so no moment lies between them.");
  return {};
}

std::string optionProblem(const SettingsViewModel& model, std::string_view key) {
  const auto text = std::string(trimmed(model.text(key)));
  if (key == SettingsViewModel::kLogoPath && !text.empty() && !text.starts_with('/'))
    return localized("This is no full path; it begins with a slash.");
  // Nothing is quoted in the options string.
  if (text.find_first_of(" \t") != std::string::npos)
    return localized(
        "The options string ends a value at a blank: what stands behind it is lost when the settings are "
        "read again.");
  return {};
}

template <class Number>
bool readNumber(std::string_view& text, std::size_t digits, char separator, Number& number) {
  if (text.size() < digits) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
  if (error != std::errc() || end != text.data() + digits) return false;
  text.remove_prefix(digits);
  if (separator == '\0') return text.empty();
  if (!text.starts_with(separator)) return false;
  text.remove_prefix(1);
  return true;
}

std::string deferralsText(std::int64_t count, const Locale& locale) {
  return count == 1 ? localized("1 deferral") : locale.number(count) + localized(" deferrals");
}

std::string measured(const StepperRule& rule, std::int64_t value, const Locale& locale) {
  switch (rule.unit) {
    case Unit::seconds:
      return amountText(std::chrono::seconds(value), locale);
    case Unit::minutes:
      return amountText(std::chrono::minutes(value), locale);
    case Unit::hours:
      return locale.duration(value, DurationUnit::hour);
    case Unit::days:
      return locale.duration(value, DurationUnit::day);
    case Unit::deferrals:
      return deferralsText(value, locale);
    case Unit::none:
      break;
  }
  return locale.number(value);
}

}  // namespace

const StepperRule* findStepper(std::string_view key) {
  const auto found = std::ranges::find(kSteppers, key, &StepperRule::key);
  return found == kSteppers.end() ? nullptr : &*found;
}

std::int64_t stepped(const StepperRule& rule, std::int64_t value, std::int64_t steps) {
  if (value > rule.range.most) return steps < 0 ? rule.range.most : value;
  if (value < rule.range.least) return steps > 0 ? rule.range.least : value;
  const auto by = std::clamp(steps, -kMostStepsAtOnce, kMostStepsAtOnce) * rule.step;
  return std::clamp(value + by, rule.range.least, rule.range.most);
}

std::string dateFieldText(Date date, const Calendar& calendar) {
  const auto local = calendar.local(date);
  const auto minutes = local.sinceMidnight.count();
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", static_cast<int>(local.day.year()),
                     static_cast<unsigned>(local.day.month()), static_cast<unsigned>(local.day.day()), minutes / 60,
                     minutes % 60);
}

std::optional<Date> dateFromField(std::string_view text, const Calendar& calendar) {
  text = trimmed(text);
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  if (!readNumber(text, 4, '-', year) || !readNumber(text, 2, '-', month) || !readNumber(text, 2, ' ', day))
    return std::nullopt;
  const auto minutes = minutesOfDay(text);
  const auto date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  if (!minutes || !date.ok()) return std::nullopt;
  return calendar.at(date, std::chrono::minutes(*minutes));
}

std::string settingProblem(const SettingsViewModel& model, std::string_view key) {
  if (SettingsViewModel::isOption(key)) return optionProblem(model, key);
  const auto* setting = findSetting(key);
  if (setting == nullptr) return {};
  const auto text = std::string(trimmed(model.text(key)));
  if (setting->type == SettingType::timeOfDay) return timeProblem(model, key);
  if (setting->group == ManagedGroup::webhooks && !text.empty() && !text.starts_with("https://"))
    return localized("This is no web address that begins with https://; nothing is sent to it.");
  if (setting->type == SettingType::labelList) {
    if (const auto wrong = firstWrongLabel(model.value(key)))
      return localized("“{}” is no label and no pattern of labels.", *wrong);
  }
  if (key == "SelfUpdateLabel" && text.empty())
    return localized("Without a label {} is used.", defaultText("SelfUpdateLabel"));
  if (key == "SelfUpdateLabel" && !std::ranges::all_of(text, [](char sign) { return isOneOf(sign, "_-.+"); }))
    return localized("“{}” is no label.", text);
  if (key == "GitHubAPIToken" && text.find_first_of(" \t") != std::string::npos)
    return localized("A token holds no blanks; it is probably not whole, or more than a token.");
  return {};
}

void SettingsForm::section(std::string_view key, std::string title, std::string warning) {
  sections_.push_back(
      {.key = std::string(key), .title = std::move(title), .warning = std::move(warning), .controls = {}});
}

SettingsControl& SettingsForm::control(ControlKind kind, std::string_view key, std::string label, std::string value,
                                       std::string help) {
  auto& control = sections_.back().controls.emplace_back();
  control.key = key;
  control.kind = kind;
  control.label = std::move(label);
  control.value = std::move(value);
  control.help = std::move(help);
  return control;
}

SettingsControl& SettingsForm::button(std::string_view key, std::string label, bool enabled, std::string help) {
  auto& made = control(ControlKind::button, key, std::move(label), {}, std::move(help));
  made.enabled = enabled;
  return made;
}

void SettingsForm::lock(SettingsControl& control) const {
  control.enabled = false;
  control.mayDecrease = control.mayIncrease = false;
  control.managed = localized("Provided by your organization through managed configuration.");
}

SettingsControl& SettingsForm::add(ControlKind kind, std::string_view key, std::string label, std::string help) {
  auto& made = control(kind, key, std::move(label), {}, std::move(help));
  const auto* setting = findSetting(SettingsViewModel::isOption(key) ? "InstallomatorOptions" : key);
  const bool isAlone = setting == nullptr || setting->group == ManagedGroup::none;
  if (isAlone ? in.model.isManaged(key) : in.model.flags().isManaged(setting->group)) lock(made);
  return made;
}

SettingsControl& SettingsForm::toggle(std::string_view key, std::string label, std::string help) {
  auto& made = add(ControlKind::toggle, key, std::move(label), std::move(help));
  made.value = in.model.value(key).boolean().value_or(false) ? "true" : "false";
  return made;
}

SettingsControl& SettingsForm::picker(std::string_view key, std::string label, std::vector<ControlChoice> choices,
                                      std::string help) {
  auto& made = add(ControlKind::picker, key, std::move(label), std::move(help));
  const auto value = in.model.value(key);
  made.value = value.integer() ? std::to_string(*value.integer()) : std::string(value.string().value_or(""));
  made.choices = std::move(choices);
  return made;
}

SettingsControl& SettingsForm::stepper(std::string_view key, std::string label, std::string help) {
  auto& made = add(ControlKind::stepper, key, std::move(label), std::move(help));
  const auto& rule = *findStepper(key);
  const auto value = in.model.value(key).integer();
  made.hasOffState = rule.hasOffState;
  made.isOn = value.has_value();
  made.value = value ? measured(rule, *value, in.locale) : localized("No limit");
  made.mayDecrease = made.enabled && value && stepped(rule, *value, -1) != *value;
  made.mayIncrease = made.enabled && value && stepped(rule, *value, 1) != *value;
  return made;
}

SettingsControl& SettingsForm::field(ControlKind kind, std::string_view key, std::string label, std::string prompt,
                                     std::string help) {
  auto& made = add(kind, key, std::move(label), std::move(help));
  const auto draft = in.window.drafts.find(key);
  made.value = draft == in.window.drafts.end() ? in.model.text(key) : draft->second;
  made.prompt = std::move(prompt);
  if (made.enabled) made.problem = settingProblem(in.model, key);
  return made;
}

}  // namespace corvane
