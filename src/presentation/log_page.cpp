#include "presentation/log_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/utf8.h"

namespace corvane {
namespace {

constexpr std::size_t kLongestLine = 1000;  // bytes; wider than any window

std::string_view symbolOf(LogEntryLevel level) {
  if (level == LogEntryLevel::warning) return "exclamationmark.triangle.fill";
  return level == LogEntryLevel::error ? "xmark.octagon.fill" : "info.circle.fill";
}

ColorRole colorOf(LogEntryLevel level) {
  if (level == LogEntryLevel::warning) return ColorRole::orange;
  return level == LogEntryLevel::error ? ColorRole::red : ColorRole::blue;
}

std::string oneLine(std::string_view message) {
  std::string line = validUtf8(message.substr(0, kLongestLine));
  std::ranges::replace_if(
      line, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  return line;
}

std::vector<FilterSegment> filtersOf(LogEntryLevel chosen, const PageTexts& texts) {
  const std::string help[] = {texts.localized("Show entries of every level."),
                              texts.localized("Show informational entries only."),
                              texts.localized("Show warnings only."), texts.localized("Show errors only.")};
  std::vector<FilterSegment> segments;
  for (const auto& name : CaseNames<LogEntryLevel>::all)
    segments.push_back({.key = std::string(name.raw),
                        .text = texts.localized(name.display),
                        .help = help[segments.size()],
                        .selected = name.value == chosen});
  return segments;
}

EmptyState emptyStateOf(const LogViewModel& model, const PageTexts& texts) {
  if (!model.filteredLogs().empty()) return {};
  if (model.isLoading() || !model.hasLoaded())
    return {.visible = true, .symbol = "clock", .title = texts.localized("Reading the log files…")};
  if (model.isFiltering())
    return {.visible = true, .symbol = "magnifyingglass", .title = texts.localized("Searching…")};
  const bool nothingAtAll = model.logs().empty();
  EmptyState empty{
      .visible = true,
      .symbol = nothingAtAll ? "app" : "magnifyingglass",
      .title = texts.localized(nothingAtAll ? toLocalize("No log entries") : toLocalize("No matching entries")),
      .text = texts.localized(nothingAtAll ? toLocalize("Refresh reads the log files again.")
                                           : toLocalize("No entry has this level and holds this text."))};
  auto& button = nothingAtAll ? empty.check : empty.showAll;
  button = {.text = texts.localized(nothingAtAll ? toLocalize("Refresh") : toLocalize("Show All")),
            .visible = true,
            .enabled = true};
  return empty;
}

std::string countTextOf(const LogViewModel& model, const Locale& locale, const PageTexts& texts) {
  const auto number = [&](std::size_t count) { return locale.number(static_cast<std::int64_t>(count)); };
  const auto all = model.logs().size();
  const auto shown = model.filteredLogs().size();
  if (model.isLoading()) return texts.localized("Reading the log files…");
  if (model.isFiltering()) return texts.localized("Searching…");
  if (all == 0) return {};
  if (shown == all) return all == 1 ? texts.localized("1 entry") : texts.localized("{} entries", number(all));
  return texts.localized("{} of {} entries", number(shown), number(all));
}

}  // namespace

LogPage makeLogPage(const LogViewModel& model, const Locale& locale, const PageTexts& texts) {
  return {
      .title = texts.localized("Logs"),
      .pathStatus = model.logPath(),
      .pathHelp = model.logPathStatusHelp(),
      .filters = filtersOf(model.logLevelFilter(), texts),
      .filterSymbol = "line.3.horizontal.decrease.circle",
      .searchText = model.searchText(),
      .searchPrompt = texts.localized("Filter by source or text…"),
      .clearSearchHelp = texts.localized("Clear the search text."),
      .refresh = {.text = texts.localized("Refresh"),
                  .help = texts.localized("Read the log files again."),
                  .visible = true,
                  .enabled = true},
      .clear = {.text = texts.localized("Clear"),
                .help = texts.localized("Clear the displayed log entries. The on-disk log file is not modified — click "
                                        "Refresh to reload it."),
                .visible = true,
                .enabled = model.canClear()},
      .copy = {.text = texts.localized("Copy"),
               .help = texts.localized("Copy the whole entry."),
               .visible = true,
               .enabled = true},
      .countText = countTextOf(model, locale, texts),
      .loading = model.isLoading(),
      .empty = emptyStateOf(model, texts)};
}

LogRow makeLogRow(const LogEntry& entry, const Calendar& calendar) {
  return {.symbol = std::string(symbolOf(entry.level)),
          .color = colorOf(entry.level),
          .level = std::string(displayText(entry.level)),
          .time = logTimeText(entry.timestamp, calendar),
          .source = validUtf8(entry.source.value_or("")),
          .line = oneLine(entry.message),
          .message = validUtf8(entry.message)};
}

std::string copiedText(const LogEntry& entry, const Calendar& calendar) {
  return fmt::format("{} [{}] {}", calendar.iso8601(entry.timestamp, true), displayText(entry.level),
                     validUtf8(entry.message));
}

std::string logTimeText(Date date, const Calendar& calendar) {
  constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto local = calendar.local(date);
  const auto minutes = local.sinceMidnight.count();
  const auto hour = minutes / 60 % 12;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date + local.offset).time_since_epoch() % 60s;
  return fmt::format("{} {}  {}:{:02}:{:02} {}", kMonths[static_cast<unsigned>(local.day.month()) - 1],
                     static_cast<unsigned>(local.day.day()), hour == 0 ? 12 : hour, minutes % 60,
                     (seconds + 60s).count() % 60, minutes < 720 ? "AM" : "PM");
}

}  // namespace corvane
