// Signatures as macOS lays them out: the code directory with its team identifier, alone or inside Mach-O
// executables. They prove nothing here; they are there to be read.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvane::sample {

struct Signer {
  std::string_view identifier;
  std::string_view team;
};

enum class Processor { arm64, intel };

// The code directory of `code`: SHA-256 over pages of 4 KiB, no special slots.
[[nodiscard]] std::string codeDirectory(const Signer& signer, std::string_view code);

// A 64-bit Mach-O executable that does nothing, signed unless the team is empty.
[[nodiscard]] std::string thinMachO(Processor processor, const Signer& signer);

// Both processors in one file, each slice signed.
[[nodiscard]] std::string universalMachO(const Signer& signer);

}  // namespace corvane::sample
