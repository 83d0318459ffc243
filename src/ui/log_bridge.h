// The log page as QML reads it. Rows become variants when they come into view, whatever the number of entries.
#pragma once

#include <QObject>
#include <QQmlPropertyMap>
#include <QString>
#include <QVariant>
#include <functional>

#include "presentation/log_page.h"
#include "ui/page_map.h"

namespace corvane::ui {

struct LogActions {
  std::function<void()> refresh;
  std::function<void()> clear;
  std::function<void(const std::string& level)> setLevel;
  std::function<void(const std::string& text)> setSearch;
};

// A list's own items would be placed by numbers too coarse for millions of rows, so the page places those in view.
class LogBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQmlPropertyMap* page READ page CONSTANT)
  Q_PROPERTY(int count READ count NOTIFY rowsChanged)
  Q_PROPERTY(int revision READ revision NOTIFY rowsChanged)

 public:
  explicit LogBridge(LogActions actions) : actions_(std::move(actions)) {}

  void setPage(const LogPage& page) { map_.set(page); }
  void setRows(const FilteredLogs& rows, const Calendar& calendar);

  [[nodiscard]] QQmlPropertyMap* page() { return map_.fields(); }
  [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
  [[nodiscard]] int revision() const { return revision_; }

  // Null for a row that is none.
  Q_INVOKABLE [[nodiscard]] QVariant row(int at) const;
  Q_INVOKABLE void copy(int at) const;
  Q_INVOKABLE void refresh() { actions_.refresh(); }
  Q_INVOKABLE void clear() { actions_.clear(); }
  Q_INVOKABLE void setLevel(const QString& level) { actions_.setLevel(level.toStdString()); }
  Q_INVOKABLE void setSearch(const QString& text) { actions_.setSearch(text.toStdString()); }

 Q_SIGNALS:
  void rowsChanged();

 private:
  LogActions actions_;
  PageMap<LogPage, LogRow> map_;
  FilteredLogs rows_;
  Calendar calendar_ = Calendar::utc();
  int revision_ = 0;
};

}  // namespace corvane::ui
