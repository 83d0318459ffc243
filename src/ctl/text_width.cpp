#include "ctl/text_width.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace corvane::ctl {
namespace {

constexpr std::string_view kEllipsis = "…";

std::size_t cellsOf(UChar32 character) {
  if (character < 0) return 1;
  constexpr auto kJoined = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
  if ((U_GET_GC_MASK(character) & kJoined) != 0) return 0;
  const auto width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// The cells of the character at `at`, which moves behind it.
std::size_t takeCharacter(std::string_view text, std::size_t& at) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  auto place = static_cast<std::int32_t>(at);
  UChar32 character = 0;
  U8_NEXT(bytes, place, static_cast<std::int32_t>(text.size()), character);
  at = static_cast<std::size_t>(place);
  return cellsOf(character);
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) width += takeCharacter(text, at);
  return width;
}

std::string elided(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  if (width == 0) return {};
  std::size_t end = 0;
  std::size_t used = 0;
  while (end < text.size()) {
    auto behind = end;
    used += takeCharacter(text, behind);
    if (used > width - 1) break;
    end = behind;
  }
  return std::string(text.substr(0, end)) + std::string(kEllipsis);
}

}  // namespace corvane::ctl
