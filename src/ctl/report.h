// What corvanectl prints, as text for people and as JSON for machines. Pure functions of values.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "base/json.h"
#include "core/client/helper_installation_service.h"
#include "core/history/receipt_manager.h"
#include "core/preferences/preference_manager.h"
#include "workflow/app_facts.h"
#include "workflow/status_fields.h"

namespace corvane::ctl {

// Where an application stands, in one word: "teamIDMismatch", "appStore", "checkFailed", "held",
// "lastUpdateFailed", "requiredReinstall", "needsUpdate", "upToDate" or "unchecked".
[[nodiscard]] std::string_view stateWord(const AppInfo& app, const AppFacts& facts);

struct StatusReport {
  const StatusFields& fields;
  std::string statusLine;
  HelperStatus helperStatus = HelperStatus::unknown;
  std::int64_t uncheckedAppCount = 0;
  std::int64_t updateCheckFailedCount = 0;
};
[[nodiscard]] JsonValue statusJson(const StatusReport& report);
[[nodiscard]] std::string statusText(const StatusReport& report, const Calendar& calendar);

// {"apps":[…]}: the record's own fields, and displayName and state.
[[nodiscard]] JsonValue appsJson(const Apps& apps, const AppFacts& facts);
// Names are cut so that a line takes at most `columns` cells, where the other columns leave them room.
[[nodiscard]] std::string appsText(const Apps& apps, const AppFacts& facts,
                                   std::optional<std::size_t> columns = std::nullopt);

// {"receipts":[…]}
[[nodiscard]] JsonValue receiptsJson(const Receipts& receipts);
[[nodiscard]] std::string receiptsText(const Receipts& receipts, const Calendar& calendar);

// {"settings":[{"key","value","source","type"}…]}: every key; secrets are "(hidden)", data is told by its size.
[[nodiscard]] JsonValue settingsJson(const PreferenceManager& preferences);
[[nodiscard]] std::string settingsText(const PreferenceManager& preferences);

// {"error":{"domain","code","text"}}
[[nodiscard]] JsonValue errorJson(const Error& error);

// Columns under their heads, two blanks apart; widths are those on a terminal.
[[nodiscard]] std::string table(const std::vector<std::vector<std::string>>& rows);

}  // namespace corvane::ctl
