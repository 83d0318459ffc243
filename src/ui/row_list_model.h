// Typed rows as a list model: roles come from the row's fields, changes from the keyed difference, so rows
// change in place and the view keeps its scroll place.
#pragma once

#include <QAbstractListModel>
#include <array>
#include <utility>
#include <vector>

#include "presentation/keyed_diff.h"
#include "ui/page_variant.h"

namespace corvane::ui {

template <PageStruct Row>
class RowListModel final : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }

  void setRows(const std::vector<Row>& target) {
    using Kind = ListStep::Kind;
    QList<int> changed;  // of the row that is updated
    applyKeyedDiff(
        rows_, target,
        [&](const ListStep& step) {
          const int at = static_cast<int>(step.index);
          if (step.kind == Kind::remove) beginRemoveRows({}, at, at);
          if (step.kind == Kind::insert) beginInsertRows({}, at, at);
          // A row only ever moves up.
          if (step.kind == Kind::move) beginMoveRows({}, at, at, {}, static_cast<int>(step.to));
          if (step.kind == Kind::update) changed = changedRoles(rows_[step.index], target[step.index]);
        },
        [&](const ListStep& step) {
          if (step.kind == Kind::remove) endRemoveRows();
          if (step.kind == Kind::insert) endInsertRows();
          if (step.kind == Kind::move) endMoveRows();
          if (step.kind == Kind::update) {
            const auto row = index(static_cast<int>(step.index));
            Q_EMIT dataChanged(row, row, changed);
          }
        });
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }

  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const int field = role - Qt::UserRole;
    if (!index.isValid() || index.row() >= rowCount() || field < 0) return {};
    QVariant value;
    int at = 0;
    forEachField(rows_[static_cast<std::size_t>(index.row())], [&](std::string_view, const auto& member) {
      if (at++ == field) value = toVariant(member);
    });
    return value;
  }

  [[nodiscard]] QHash<int, QByteArray> roleNames() const override {
    QHash<int, QByteArray> names;
    int role = Qt::UserRole;
    forEachField(Row{}, [&](std::string_view name, const auto&) {
      names.insert(role++, QByteArray(name.data(), static_cast<qsizetype>(name.size())));
    });
    return names;
  }

 private:
  static QList<int> changedRoles(const Row& before, const Row& now) {
    QList<int> roles;
    int role = Qt::UserRole;
    std::apply(
        [&](const auto&... field) {
          const auto look = [&](auto member) {
            if (!(before.*member == now.*member)) roles.append(role);
            ++role;
          };
          (look(field.member), ...);
        },
        PageFields<Row>::all);
    return roles;
  }

  std::vector<Row> rows_;
};

}  // namespace corvane::ui
