#include "core/records/enumerations.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

}  // namespace corvane
