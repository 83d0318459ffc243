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
    applyKeyedDiff(
        rows_, target,
        [this](const ListStep& step) {
          const int at = static_cast<int>(step.index);
          if (step.kind == Kind::remove) beginRemoveRows({}, at, at);
          if (step.kind == Kind::insert) beginInsertRows({}, at, at);
          // A row only ever moves up.
          if (step.kind == Kind::move) beginMoveRows({}, at, at, {}, static_cast<int>(step.to));
        },
        [this](const ListStep& step) {
          if (step.kind == Kind::remove) endRemoveRows();
          if (step.kind == Kind::insert) endInsertRows();
          if (step.kind == Kind::move) endMoveRows();
          if (step.kind == Kind::update) {
            const auto row = index(static_cast<int>(step.index));
            Q_EMIT dataChanged(row, row);
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
  std::vector<Row> rows_;
};

}  // namespace corvane::ui
