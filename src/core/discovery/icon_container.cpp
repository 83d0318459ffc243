#include "core/discovery/icon_container.h"

#include <algorithm>

namespace corvane {
namespace {

using namespace std::string_view_literals;

constexpr auto kMagic = "icns"sv;
constexpr std::size_t kHead = 8;  // type and length, of the file and of each entry
constexpr auto kPngStart = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"sv;

std::uint32_t number(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// The longer side of a PNG picture in pixels; 0 for anything else, and for what is too large to draw.
std::uint32_t sideOf(std::string_view picture) {
  if (!picture.starts_with(kPngStart) || picture.size() < kPngStart.size() + 8) return 0;
  const auto width = number(picture, kPngStart.size());
  const auto height = number(picture, kPngStart.size() + 4);
  return std::min(width, height) == 0 || std::max(width, height) > kIconSideLimit ? 0 : std::max(width, height);
}

bool isBetter(std::uint32_t side, std::uint32_t than, std::uint32_t wanted) {
  if (than == 0) return true;
  return than < wanted ? side > than : side >= wanted && side < than;
}

}  // namespace

std::optional<std::string_view> bestIconPicture(std::string_view bytes, std::uint32_t pixels) {
  if (!bytes.starts_with(kMagic) || bytes.size() < kHead) return std::nullopt;
  bytes = bytes.substr(kHead, std::max<std::size_t>(number(bytes, 4), kHead) - kHead);
  std::optional<std::string_view> best;
  std::uint32_t bestSide = 0;
  while (bytes.size() >= kHead) {
    const auto length = number(bytes, 4);
    if (length < kHead || length > bytes.size()) break;
    const auto picture = bytes.substr(kHead, length - kHead);
    if (const auto side = sideOf(picture); side != 0 && isBetter(side, bestSide, pixels)) {
      best = picture;
      bestSide = side;
    }
    bytes.remove_prefix(length);
  }
  return best;
}

}  // namespace corvane
