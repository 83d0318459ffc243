#include "ctl/report.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/policies/installomator_exit_code.h"
#include "ctl/text_width.h"
#include "workflow/app_predicates.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view kHidden = "(hidden)";

JsonValue dateJson(const std::optional<Date>& date) { return date ? JsonValue(iso8601Utc(*date)) : JsonValue(); }

std::string dateText(const std::optional<Date>& date, const Calendar& calendar) {
  return date ? calendar.iso8601(*date) : "never";
}

JsonValue textJson(const std::optional<std::string>& text) { return text ? JsonValue(*text) : JsonValue(); }

std::string_view typeName(SettingType type) {
  if (type == SettingType::integerList) return "list of integers";
  const auto name = propertyListTypeName(type);
  return name == "array" ? "list of strings" : name;
}

std::vector<std::size_t> columnWidths(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
  }
  return widths;
}

// A name gives way to the terminal's width, but stays one to know an application by.
constexpr std::size_t kLeastName = 12;
constexpr std::size_t kBetweenColumns = 2;

// `rows` with the cells of `column` cut so that each line fits, where that is possible.
void fitColumn(std::vector<std::vector<std::string>>& rows, std::size_t column, std::size_t columns) {
  const auto widths = columnWidths(rows);
  std::size_t others = 0;
  for (std::size_t i = 0; i < widths.size(); ++i)
    others += (i == column ? 0 : widths[i]) + (i + 1 < widths.size() ? kBetweenColumns : 0);
  const auto room = std::max(columns > others ? columns - others : 0, kLeastName);
  for (auto& row : rows) row[column] = elided(row[column], room);
}

// Every key, each with its value as it may be shown.
template <class Visit>
void forEachSetting(const PreferenceManager& preferences, Visit&& visit) {
  for (const auto& setting : settings_rows::all) {
    auto value = preferences.effectiveValue(setting.key);
    const auto source = preferences.valueSource(setting.key);
    if (setting.neverLogged && source != ValueSource::fallback) value = kHidden;
    visit(setting, std::move(value), sourceName(source));
  }
}

}  // namespace

std::string_view stateWord(const AppInfo& app, const AppFacts& facts) {
  if (app.teamIDMismatch) return "teamIDMismatch";
  if (isExcludedAppStoreApp(app, facts)) return "appStore";
  if (app.updateCheckFailed) return "checkFailed";
  if (appNeedsUpdate(app, facts)) {
    if (heldFailureRecord(app.label, facts)) return "held";
    if (latestFailedReceipt(app, facts)) return "lastUpdateFailed";
    return isForcedReinstallPending(app, facts) ? "requiredReinstall" : "needsUpdate";
  }
  return app.newVersion ? "upToDate" : "unchecked";
}

JsonValue statusJson(const StatusReport& report) {
  const auto& gate = report.fields.gate;
  const auto& messages = report.fields.messages;
  const auto& inventory = report.fields.inventory;
  const auto& deferral = report.fields.deferral;
  const auto& helper = report.fields.helper;
  return JsonObject{{"statusLine", report.statusLine},
                    {"appCount", inventory.apps.size()},
                    {"pendingUpdates", inventory.pendingUpdates},
                    {"updatesAwaitingNextCycle", inventory.updatesAwaitingNextCycle},
                    {"upToDateCount", inventory.upToDateCount},
                    {"alertCount", inventory.alertCount},
                    {"uncheckedAppCount", report.uncheckedAppCount},
                    {"updateCheckFailedCount", report.updateCheckFailedCount},
                    {"lastDiscoveryDate", dateJson(inventory.lastDiscoveryDate)},
                    {"lastUpdateCheckDate", dateJson(inventory.lastUpdateCheckDate)},
                    {"cycleCompletionMessage", textJson(inventory.cycleCompletionMessage)},
                    {"currentHardDeadlineDate", dateJson(deferral.currentHardDeadlineDate)},
                    {"helperStatus", helperStatusName(report.helperStatus)},
                    {"helperOperational", helper.helperOperational},
                    {"installomatorAvailable", helper.installomatorAvailable},
                    {"firstRunSetupCompleted", helper.firstRunSetupCompleted},
                    {"isManagedByMDM", helper.isManagedByMDM},
                    {"isPatching", gate.isPatching},
                    {"isLoading", gate.isLoading},
                    {"statusMessage", textJson(messages.statusMessage)},
                    {"errorMessage", textJson(messages.errorMessage)}};
}

std::string statusText(const StatusReport& report, const Calendar& calendar) {
  const auto& inventory = report.fields.inventory;
  const auto& helper = report.fields.helper;
  std::string text = report.statusLine + "\n\n";
  const auto line = [&](std::string_view name, const auto& value) { text += fmt::format("{:<24}{}\n", name, value); };
  line("Pending Updates", inventory.pendingUpdates);
  if (inventory.updatesAwaitingNextCycle > 0) line("Waiting for next cycle", inventory.updatesAwaitingNextCycle);
  line("Up to Date", inventory.upToDateCount);
  line("Alerts", inventory.alertCount);
  if (report.uncheckedAppCount > 0) line("Not checked yet", report.uncheckedAppCount);
  line("Last Discovery", dateText(inventory.lastDiscoveryDate, calendar));
  line("Last Check for Updates", dateText(inventory.lastUpdateCheckDate, calendar));
  if (const auto deadline = report.fields.deferral.currentHardDeadlineDate)
    line("Update Deadline", dateText(deadline, calendar));
  line("Root helper", helper.helperOperational ? "running" : helperStatusText(report.helperStatus) + ", not running");
  line("Installomator", helper.installomatorAvailable ? "present" : "not found");
  if (inventory.cycleCompletionMessage) text += "\n" + *inventory.cycleCompletionMessage + "\n";
  return text;
}

JsonValue appsJson(const Apps& apps, const AppFacts& facts) {
  JsonArray list;
  list.reserve(apps.size());
  for (const auto& app : apps) {
    const auto record = toJson(app);
    auto object = *record.object();
    object.set("displayName", app.displayName());
    object.set("state", stateWord(app, facts));
    list.emplace_back(std::move(object));
  }
  return JsonObject{{"apps", std::move(list)}};
}

std::string appsText(const Apps& apps, const AppFacts& facts, std::optional<std::size_t> columns) {
  if (apps.empty()) return "No applications. `corvanectl discover` looks for them.\n";
  std::vector<std::vector<std::string>> rows{{"LABEL", "NAME", "INSTALLED", "LATEST", "STATE"}};
  for (const auto& app : apps) {
    rows.push_back({app.label.text, app.displayName(), app.displayCurrentVersion().value_or("-"),
                    app.displayNewVersion().value_or("-"), std::string(stateWord(app, facts))});
  }
  if (columns) fitColumn(rows, 1, *columns);
  return table(rows);
}

JsonValue receiptsJson(const Receipts& receipts) {
  JsonArray list;
  list.reserve(receipts.size());
  for (const auto& receipt : receipts) list.push_back(toJson(receipt));
  return JsonObject{{"receipts", std::move(list)}};
}

std::string receiptsText(const Receipts& receipts, const Calendar& calendar) {
  if (receipts.empty()) return "No patch runs recorded.\n";
  std::vector<std::vector<std::string>> rows{{"TIME", "LABEL", "STATUS", "VERSION", "WANTED", "RESULT"}};
  for (const auto& receipt : receipts) {
    const auto detail =
        InstallomatorExitCode::detail(receipt.installomatorExitCode, receipt.usedStagedInstaller.value_or(false));
    rows.push_back({calendar.iso8601(receipt.timestamp), receipt.label.text, std::string(rawName(receipt.status)),
                    receipt.version.value_or("-"), receipt.targetVersion.value_or("-"),
                    fmt::format("{} ({})", detail.shortName, receipt.installomatorExitCode)});
  }
  return table(rows);
}

JsonValue settingsJson(const PreferenceManager& preferences) {
  JsonArray list;
  forEachSetting(preferences, [&](const Setting& setting, JsonValue value, std::string_view source) {
    list.emplace_back(JsonObject{
        {"key", setting.key}, {"value", std::move(value)}, {"source", source}, {"type", typeName(setting.type)}});
  });
  return JsonObject{{"settings", std::move(list)}};
}

std::string settingsText(const PreferenceManager& preferences) {
  std::vector<std::vector<std::string>> rows{{"KEY", "SOURCE", "VALUE"}};
  forEachSetting(preferences, [&](const Setting& setting, const JsonValue& value, std::string_view source) {
    const auto text = value.string();
    rows.push_back({std::string(setting.key), std::string(source),
                    value.isNull() ? "-" : (text ? std::string(*text) : writeJson(value))});
  });
  return table(rows);
}

JsonValue errorJson(const Error& error) {
  return JsonObject{{"error", JsonObject{{"domain", error.domain}, {"code", error.code}, {"text", error.text}}}};
}

std::string table(const std::vector<std::vector<std::string>>& rows) {
  const auto widths = columnWidths(rows);
  std::string text;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 < row.size()) text.append(widths[i] - displayWidth(row[i]) + kBetweenColumns, ' ');
    }
    text += "\n";
  }
  return text;
}

}  // namespace corvane::ctl
