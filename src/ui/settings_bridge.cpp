#include "ui/settings_bridge.h"

#include <algorithm>

namespace corvane::ui {

void SettingsBridge::setPage(const SettingsPage& page) {
  for (const auto& section : page.sections) {
    auto*& model = controls_[section.key];
    if (model == nullptr) model = new RowListModel<SettingsControl>(this);
    model->setRows(section.controls);
  }
  map_.set(page);
  // The views of a section that went are deleted later, and before their models.
  std::erase_if(controls_, [&](const auto& entry) {
    if (std::ranges::count(page.sections, entry.first, &SettingsSection::key) > 0) return false;
    entry.second->deleteLater();
    return true;
  });
}

QAbstractListModel* SettingsBridge::controls(const QString& section) const {
  const auto found = controls_.find(section.toStdString());
  return found == controls_.end() ? nullptr : found->second;
}

}  // namespace corvane::ui
