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

}  // namespace corvane
