#include "core/discovery/icon_container.h"

#include "support/test.h"

namespace corvane {
namespace {

std::string number(std::size_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes += static_cast<char>(value >> static_cast<unsigned>(shift) & 0xFFU);
  return bytes;
}

std::string png(std::size_t width, std::size_t height) {
  return std::string("\x89PNG\r\n\x1a\n", 8) + number(13) + "IHDR" + number(width) + number(height) + "the rest";
}

std::string entry(const std::string& type, const std::string& bytes) { return type + number(bytes.size() + 8) + bytes; }

std::string container(const std::vector<std::string>& pictures) {
  std::string entries;
  for (const auto& picture : pictures) entries += entry("ic07", picture);
  return entry("icns", entries);
}

TEST(IconContainer, ThePictureThatNeedsNoStretchingIsChosenWhereverItStands) {
  const auto small = png(32, 32);
  const auto middle = png(64, 64);
  const auto large = png(512, 512);
  const auto file = container({large, "\xFF\x4F\xFF\x51 an older form", small, middle});
  EXPECT_EQ(bestIconPicture(file, 32), small);
  EXPECT_EQ(bestIconPicture(file, 33), middle);
  EXPECT_EQ(bestIconPicture(file, 65), large);
  EXPECT_EQ(bestIconPicture(file, 4000), large);
  EXPECT_EQ(bestIconPicture(container({png(0, 32), png(32, 2049), png(0xFFFFFFFF, 1)}), 32), std::nullopt);
}

TEST(IconContainer, WhatIsTornGivesWhatCameBeforeAndNothingBeyondItsEnd) {
  const auto small = png(32, 32);
  const auto file = container({small, png(64, 64)});
  for (std::size_t length = 0; length < file.size(); ++length) {
    const std::string torn = file.substr(0, length);
    const auto found = bestIconPicture(torn, 64);
    EXPECT_EQ(found.value_or(""), length >= 16 + small.size() ? small : "") << length;
  }
  for (const std::size_t length : {0U, 7U, 8U, 0xFFFFFFFFU}) {
    EXPECT_EQ(bestIconPicture("icns" + number(4096) + "ic07" + number(length) + small, 32), std::nullopt) << length;
    (void)bestIconPicture("icns" + number(length) + entry("ic07", small), 32);
  }
  EXPECT_EQ(bestIconPicture("icns" + number(8) + entry("ic07", small), 32), std::nullopt)
      << "beyond the file's own end";
}

}  // namespace
}  // namespace corvane
