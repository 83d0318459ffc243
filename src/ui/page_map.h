// A page as QML reads it: a property for each field, a list model for its rows. Only what differs is handed over.
#pragma once

#include <QQmlPropertyMap>
#include <type_traits>
#include <vector>

#include "ui/row_list_model.h"

namespace corvane::ui {

template <PageStruct Page, PageStruct Row>
class PageMap {
 public:
  PageMap() { set({}); }

  void set(const Page& page) {
    std::apply([&](const auto&... field) { (hand(field, page), ...); }, PageFields<Page>::all);
    shown_ = page;
    everShown_ = true;
  }

  [[nodiscard]] QQmlPropertyMap* fields() { return &fields_; }
  [[nodiscard]] QAbstractListModel* rows() { return &rows_; }

 private:
  template <class Field>
  void hand(const Field& field, const Page& page) {
    const auto& value = page.*(field.member);
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(value)>, std::vector<Row>>) {
      rows_.setRows(value);
    } else if (!everShown_ || !(value == shown_.*(field.member))) {
      fields_.insert(toQString(field.name), toVariant(value));
    }
  }

  Page shown_;
  bool everShown_ = false;
  QQmlPropertyMap fields_;
  RowListModel<Row> rows_;
};

}  // namespace corvane::ui
