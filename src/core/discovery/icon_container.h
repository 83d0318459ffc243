// A Mac's icon files: one picture in several sizes. Chooses among them; drawing is the window's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace corvane {

// More than any application's icon; what lies in a bundle is its maker's, so it is bounded.
inline constexpr std::size_t kIconFileLimit = 16U << 20U;
inline constexpr std::uint32_t kIconSideLimit = 2048;  // pixels

// The PNG picture in an ".icns" file that is drawn best with sides of `pixels`: the smallest that needs no stretching,
// else the largest. Absent for anything that is no sound file of this kind, and where it holds only older forms of
// picture. Any bytes may be given; the view points into them.
[[nodiscard]] std::optional<std::string_view> bestIconPicture(std::string_view bytes, std::uint32_t pixels);

}  // namespace corvane
