#include "ui/dashboard_bridge.h"

#include <utility>

#include "base/localized.h"

namespace corvane::ui {

DashboardBridge::DashboardBridge(DashboardActions actions, QObject* parent)
    : QObject(parent), actions_(std::move(actions)) {
  setPage({});
}

void DashboardBridge::setPage(const DashboardPage& page) {
  std::apply(
      [&](const auto&... field) {
        const auto hand = [&](const auto& f) {
          using Value = std::remove_cvref_t<decltype(page.*(f.member))>;
          if constexpr (std::is_same_v<Value, std::vector<AppStatusRow>>) {
            rows_.setRows(page.*(f.member));
          } else if (!everShown_ || !(page.*(f.member) == shown_.*(f.member))) {
            map_.insert(toQString(f.name), toVariant(page.*(f.member)));
          }
        };
        (hand(field), ...);
      },
      PageFields<DashboardPage>::all);
  shown_ = page;
  everShown_ = true;
}

void DashboardBridge::setWindowTitle(const QString& title) {
  if (title == windowTitle_) return;
  windowTitle_ = title;
  Q_EMIT windowTitleChanged();
}

QString DashboardBridge::statusSectionTitle() const { return toQString(localized("Status")); }

}  // namespace corvane::ui
