// Page values as the variants that QML reads. Made only for what is shown.
#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>
#include <string>
#include <vector>

#include "presentation/page_fields.h"

namespace corvane::ui {

inline QString toQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline QVariant toVariant(const std::string& text) { return toQString(text); }
inline QVariant toVariant(bool value) { return value; }
inline QVariant toVariant(std::int64_t value) { return QVariant::fromValue<qlonglong>(value); }
inline QVariant toVariant(ColorRole role) { return toQString(colorRoleName(role)); }
inline QVariant toVariant(ControlKind kind) { return toQString(controlKindName(kind)); }

template <PageStruct T>
QVariant toVariant(const std::vector<T>& list);

template <PageStruct T>
QVariant toVariant(const T& page) {
  QVariantMap map;
  forEachField(page, [&](std::string_view name, const auto& value) { map.insert(toQString(name), toVariant(value)); });
  return map;
}

template <PageStruct T>
QVariant toVariant(const std::vector<T>& list) {
  QVariantList variants;
  variants.reserve(static_cast<qsizetype>(list.size()));
  for (const auto& item : list) variants.push_back(toVariant(item));
  return variants;
}

}  // namespace corvane::ui
