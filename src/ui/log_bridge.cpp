#include "ui/log_bridge.h"

#include <QClipboard>
#include <QGuiApplication>

namespace corvane::ui {

void LogBridge::setRows(const FilteredLogs& rows, const Calendar& calendar) {
  if (revision_ != 0 && rows.isSameAs(rows_) && calendar.zoneName() == calendar_.zoneName()) return;
  rows_ = rows;
  calendar_ = calendar;
  ++revision_;
  Q_EMIT rowsChanged();
}

QVariant LogBridge::row(int at) const {
  if (at < 0 || at >= count()) return {};
  return toVariant(makeLogRow(rows_[static_cast<std::size_t>(at)], calendar_));
}

void LogBridge::copy(int at) const {
  if (at < 0 || at >= count()) return;
  QGuiApplication::clipboard()->setText(toQString(copiedText(rows_[static_cast<std::size_t>(at)], calendar_)));
}

}  // namespace corvane::ui
