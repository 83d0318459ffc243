// The log page as values: its controls, what it says about the files, and a row for each entry that is in view.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "diagnostics/log_view_model.h"
#include "platform/locale.h"
#include "presentation/dashboard_page.h"
#include "presentation/page_texts.h"

namespace corvane {

// One entry. Made for what is in view alone: there may be millions.
struct LogRow {
  std::string symbol;
  ColorRole color = ColorRole::secondary;
  std::string level;
  std::string time;
  std::string source;   // empty for none
  std::string line;     // the message in one line, cut where no window is so wide
  std::string message;  // whole
  friend bool operator==(const LogRow&, const LogRow&) = default;
};

struct LogPage {
  std::string title;
  std::string pathStatus;
  std::string pathHelp;
  std::vector<FilterSegment> filters;
  std::string filterSymbol;
  std::string searchText;
  std::string searchPrompt;
  std::string clearSearchHelp;
  PageButton refresh;
  PageButton clear;
  PageButton copy;
  std::string countText;
  bool loading = false;
  EmptyState empty;  // `check` refreshes, `showAll` takes filter and search away
  friend bool operator==(const LogPage&, const LogPage&) = default;
};

// Main thread.
[[nodiscard]] LogPage makeLogPage(const LogViewModel& model, const Locale& locale, const PageTexts& texts);
[[nodiscard]] LogRow makeLogRow(const LogEntry& entry, const Calendar& calendar);
// As it stands in a log: time, level and whole message. For the clipboard.
[[nodiscard]] std::string copiedText(const LogEntry& entry, const Calendar& calendar);

// "Nov 22  9:04:42 PM", in every language.
[[nodiscard]] std::string logTimeText(Date date, const Calendar& calendar);

template <>
struct PageFields<LogRow> {
  static constexpr auto all = std::make_tuple(pageField("symbol", &LogRow::symbol), pageField("color", &LogRow::color),
                                              pageField("level", &LogRow::level), pageField("time", &LogRow::time),
                                              pageField("source", &LogRow::source), pageField("line", &LogRow::line),
                                              pageField("message", &LogRow::message));
};
template <>
struct PageFields<LogPage> {
  using Page = LogPage;
  static constexpr auto all = std::make_tuple(
      pageField("title", &Page::title), pageField("pathStatus", &Page::pathStatus),
      pageField("pathHelp", &Page::pathHelp), pageField("filters", &Page::filters),
      pageField("filterSymbol", &Page::filterSymbol), pageField("searchText", &Page::searchText),
      pageField("searchPrompt", &Page::searchPrompt), pageField("clearSearchHelp", &Page::clearSearchHelp),
      pageField("refresh", &Page::refresh), pageField("clear", &Page::clear), pageField("copy", &Page::copy),
      pageField("countText", &Page::countText), pageField("loading", &Page::loading), pageField("empty", &Page::empty));
};

}  // namespace corvane
