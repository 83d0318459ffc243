// A page as JSON, by the field lists of its structs. Adds nothing and leaves nothing out.
#pragma once

#include <string>
#include <vector>

#include "base/json.h"
#include "presentation/page_fields.h"

namespace corvane {

[[nodiscard]] inline JsonValue pageJson(const std::string& text) { return text; }
[[nodiscard]] inline JsonValue pageJson(bool value) { return value; }
[[nodiscard]] inline JsonValue pageJson(ColorRole role) { return colorRoleName(role); }
[[nodiscard]] inline JsonValue pageJson(ControlKind kind) { return controlKindName(kind); }

template <PageStruct T>
[[nodiscard]] JsonValue pageJson(const T& page);

template <PageStruct T>
[[nodiscard]] JsonValue pageJson(const std::vector<T>& list) {
  JsonArray array;
  array.reserve(list.size());
  for (const auto& item : list) array.push_back(pageJson(item));
  return array;
}

// An object with the fields in their order; colours by the names of their roles.
template <PageStruct T>
[[nodiscard]] JsonValue pageJson(const T& page) {
  JsonObject object;
  forEachField(page, [&](std::string_view name, const auto& value) { object.set(std::string(name), pageJson(value)); });
  return object;
}

}  // namespace corvane
