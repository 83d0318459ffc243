// How a page's plain structs tell their fields: the window's roles, the changed ones and JSON are derived
// from these lists, so that a field is named once.
#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace corvane {

template <class Owner, class Value>
struct PageField {
  std::string_view name;
  Value Owner::*member;
};

template <class Owner, class Value>
constexpr PageField<Owner, Value> pageField(std::string_view name, Value Owner::*member) {
  return {name, member};
}

// Specialised beside each struct: a tuple of PageField as `all`.
template <class T>
struct PageFields;

template <class T>
concept PageStruct = requires {
  PageFields<T>::all;
};

// Calls `visit(name, value)` for each field in order.
template <PageStruct T, class Visit>
constexpr void forEachField(const T& page, Visit&& visit) {
  std::apply([&](const auto&... field) { (visit(field.name, page.*(field.member)), ...); }, PageFields<T>::all);
}

template <PageStruct T>
constexpr std::size_t fieldCount() {
  return std::tuple_size_v<std::remove_cvref_t<decltype(PageFields<T>::all)>>;
}

// Colours by meaning; the theme alone knows values.
enum class ColorRole { primary, secondary, green, orange, red, yellow, blue, accent, clear };
[[nodiscard]] std::string_view colorRoleName(ColorRole role);

// What a control of a form is.
enum class ControlKind {
  toggle,      // value "true" or "false"
  picker,      // value: the chosen one's, which may be none of the choices
  stepper,     // value: the text between its buttons; hasOffState adds a switch in front
  text,        // value: the text as edited
  secret,      // the same, hidden until it is revealed
  multiline,   // the same, with line breaks
  timeOfDay,   // value "HH:mm"
  date,        // value: "yyyy-MM-dd HH:mm", local
  button,      // label on it
  disclosure,  // value "true" while what it holds is shown; the page leaves the rest out
  fact,        // label and value, to be read and copied
  link,        // value: the address
  note,        // help alone
};
[[nodiscard]] std::string_view controlKindName(ControlKind kind);

}  // namespace corvane
