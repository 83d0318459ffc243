#include "base/uuid.h"

namespace corvane {
namespace {

constexpr std::size_t kTextLength = 36;

// Where the groups of the text form are parted, by byte.
bool dashBefore(std::size_t byte) { return byte == 4 || byte == 6 || byte == 8 || byte == 10; }

std::optional<std::uint8_t> nibble(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
  return std::nullopt;
}

}  // namespace

std::string Uuid::text() const {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string out;
  out.reserve(kTextLength);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (dashBefore(i)) out += '-';
    out += digits[bytes[i] >> 4U];
    out += digits[bytes[i] & 0xFU];
  }
  return out;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
  if (text.size() != kTextLength) return std::nullopt;
  Uuid uuid;
  std::size_t at = 0;
  for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
    if (dashBefore(i) && text[at++] != '-') return std::nullopt;
    const auto high = nibble(text[at++]);
    const auto low = nibble(text[at++]);
    if (!high || !low) return std::nullopt;
    uuid.bytes[i] = static_cast<std::uint8_t>(*high << 4U | *low);
  }
  return uuid;
}

}  // namespace corvane
