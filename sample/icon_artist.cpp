#include "sample/icon_artist.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace corvane::sample {
namespace {

struct Colour {
  double red = 0;
  double green = 0;
  double blue = 0;
};

// Top and bottom of the tile; the figure is nearly white on all of them.
constexpr std::array<std::array<Colour, 2>, 8> kTiles{{
    {{{0.32, 0.56, 0.95}, {0.13, 0.33, 0.78}}},
    {{{0.98, 0.62, 0.28}, {0.86, 0.36, 0.12}}},
    {{{0.35, 0.75, 0.52}, {0.10, 0.50, 0.33}}},
    {{{0.72, 0.50, 0.93}, {0.45, 0.24, 0.72}}},
    {{{0.95, 0.45, 0.55}, {0.76, 0.18, 0.33}}},
    {{{0.30, 0.72, 0.80}, {0.08, 0.45, 0.56}}},
    {{{0.55, 0.60, 0.68}, {0.28, 0.33, 0.42}}},
    {{{0.93, 0.76, 0.30}, {0.75, 0.53, 0.10}}},
}};
constexpr Colour kFigure{0.98, 0.98, 0.99};
constexpr int kFigures = 6;
constexpr int kSide = 64;  // sharp in a row of a dense screen

// The picture's square is -1 to 1 both ways, y downwards.
bool isTile(double x, double y) {
  constexpr double kHalf = 0.9;
  constexpr double kCorner = 0.42;
  const double over =
      std::hypot(std::max(std::abs(x) - (kHalf - kCorner), 0.0), std::max(std::abs(y) - (kHalf - kCorner), 0.0));
  return over <= kCorner;
}

bool isFigure(int figure, double x, double y) {
  const double far = std::hypot(x, y);
  switch (figure) {
    case 0:  // a ring
      return far < 0.52 && far > 0.32;
    case 1:  // three lines of text
      return std::abs(x) < 0.5 &&
             (std::abs(y + 0.34) < 0.09 || std::abs(y) < 0.09 || (std::abs(y - 0.34) < 0.09 && x < 0.1));
    case 2:  // a play sign
      return x > -0.36 && x < 0.52 && std::abs(y) < (0.52 - x) * 0.6;
    case 3:  // bars of a chart
      return y < 0.48 && ((std::abs(x + 0.38) < 0.12 && y > 0.05) || (std::abs(x) < 0.12 && y > -0.48) ||
                          (std::abs(x - 0.38) < 0.12 && y > -0.2));
    case 4:  // a star of six rays
      return far < 0.30 + 0.24 * std::pow(std::abs(std::cos(3 * std::atan2(y, x))), 2);
    default:  // a diamond with a hole
      return std::abs(x) + std::abs(y) < 0.62 && std::abs(x) + std::abs(y) > 0.28;
  }
}

// Red, green, blue and alpha of one pixel, from four samples of it.
std::array<unsigned char, 4> pixelAt(int column, int row, int side, std::uint32_t seed) {
  constexpr int kSamples = 2;
  const auto& tile = kTiles[seed % kTiles.size()];
  const int figure = static_cast<int>(seed / kTiles.size() % kFigures);
  Colour sum;
  int covered = 0;
  for (int i = 0; i < kSamples * kSamples; ++i) {
    const double x = (column + (i % kSamples + 0.5) / kSamples) * 2 / side - 1;
    const double y = (row + (i / kSamples + 0.5) / kSamples) * 2 / side - 1;
    if (!isTile(x, y)) continue;
    ++covered;
    const double down = (y + 1) / 2;
    const auto mixed = [&](double Colour::*part) { return tile[0].*part + (tile[1].*part - tile[0].*part) * down; };
    const bool onFigure = isFigure(figure, x, y);
    sum.red += onFigure ? kFigure.red : mixed(&Colour::red);
    sum.green += onFigure ? kFigure.green : mixed(&Colour::green);
    sum.blue += onFigure ? kFigure.blue : mixed(&Colour::blue);
  }
  const auto byte = [](double part) {
    return static_cast<unsigned char>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
  };
  const double whole = std::max(covered, 1);
  return {byte(sum.red / whole), byte(sum.green / whole), byte(sum.blue / whole),
          byte(static_cast<double>(covered) / (kSamples * kSamples))};
}

std::string number(std::size_t value) {
  std::string bytes;
  for (unsigned shift = 32; shift > 0; shift -= 8) bytes += static_cast<char>(value >> (shift - 8) & 0xFFU);
  return bytes;
}

std::string chunk(std::string_view type, std::string_view bytes) {
  const auto body = std::string(type) + std::string(bytes);
  return number(bytes.size()) + body +
         number(crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size())));
}

std::string png(int side, std::uint32_t seed) {
  std::string lines;
  for (int row = 0; row < side; ++row) {
    lines += '\0';  // no filter
    for (int column = 0; column < side; ++column)
      for (const auto part : pixelAt(column, row, side, seed)) lines += static_cast<char>(part);
  }
  auto size = compressBound(lines.size());
  std::string packed(size, '\0');
  compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(lines.data()), lines.size(),
            Z_BEST_COMPRESSION);
  packed.resize(size);
  const auto edge = number(static_cast<std::size_t>(side));
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", edge + edge + std::string("\x08\x06\0\0\0", 5)) + chunk("IDAT", packed) +
         chunk("IEND", "");
}

std::string entry(std::string_view type, std::string_view bytes) {
  return std::string(type) + number(bytes.size() + 8) + std::string(bytes);
}

}  // namespace

std::string iconFor(std::string_view name) {
  const auto seed =
      static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(name.data()), static_cast<uInt>(name.size())));
  return entry("icns", entry("ic12", png(kSide, seed)));
}

}  // namespace corvane::sample
