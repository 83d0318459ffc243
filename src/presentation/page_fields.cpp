#include "presentation/page_fields.h"

namespace corvane {

std::string_view colorRoleName(ColorRole role) {
  switch (role) {
    case ColorRole::primary:
      return "primary";
    case ColorRole::secondary:
      return "secondary";
    case ColorRole::green:
      return "green";
    case ColorRole::orange:
      return "orange";
    case ColorRole::red:
      return "red";
    case ColorRole::yellow:
      return "yellow";
    case ColorRole::blue:
      return "blue";
    case ColorRole::accent:
      return "accent";
    case ColorRole::clear:
      return "clear";
  }
  return "clear";
}

std::string_view controlKindName(ControlKind kind) {
  switch (kind) {
    case ControlKind::toggle:
      return "toggle";
    case ControlKind::picker:
      return "picker";
    case ControlKind::stepper:
      return "stepper";
    case ControlKind::text:
      return "text";
    case ControlKind::secret:
      return "secret";
    case ControlKind::multiline:
      return "multiline";
    case ControlKind::timeOfDay:
      return "timeOfDay";
    case ControlKind::date:
      return "date";
    case ControlKind::button:
      return "button";
    case ControlKind::disclosure:
      return "disclosure";
    case ControlKind::fact:
      return "fact";
    case ControlKind::link:
      return "link";
    case ControlKind::note:
      return "note";
  }
  return "note";
}

}  // namespace corvane
