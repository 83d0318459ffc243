// Identifiers of events, runs and tokens.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// A version-4 UUID as a value. Fresh ones come from the Entropy port.
struct Uuid {
  std::array<std::uint8_t, 16> bytes{};

  // Upper-case text with dashes; reading takes either case.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] static std::optional<Uuid> parse(std::string_view text);

  friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

}  // namespace corvane
