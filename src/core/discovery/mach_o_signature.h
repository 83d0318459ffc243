// Who signed a program: the team and the code-directory hash, read from the Mach-O file itself. Proves
// nothing: whether the signature holds is for the system's own verification before an install.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"

namespace corvane {

struct CodeSignature {
  std::string identifier;                     // as signed, "org.corvane.Corvane"
  std::optional<std::string> teamIdentifier;  // absent for ad-hoc and platform signatures
  std::optional<std::string> cdhash;          // 40 hexadecimal digits; only where it was asked for
  friend bool operator==(const CodeSignature&, const CodeSignature&) = default;
};

// Reading the names costs two short reads; the hash needs the whole code directory, which grows with the
// program (32 bytes for each 4 KiB of it).
enum class SignatureDetail { names, namesAndHash };

// Codes of the domain "CRVSignature"; failures of the file itself come with errno in "CRVFiles".
struct SignatureError {
  static constexpr const char* domain = "CRVSignature";
  static constexpr int notMachO = 1;
  static constexpr int notSigned = 2;
  static constexpr int damaged = 3;
};

// Thin and universal files (32 and 64-bit, headers of either byte order), the arm64 slice before x86_64
// before the first. Of several code directories the one with the strongest hash counts, as the system
// counts. Only the headers and the signature are read, each offset is checked against the file, no length
// in the file makes it read or keep more than 64 MiB. Any thread.
[[nodiscard]] Result<CodeSignature> readMachOSignature(const std::filesystem::path& file,
                                                       SignatureDetail detail = SignatureDetail::namesAndHash);

// The same on an open file, which stays open and keeps its position.
[[nodiscard]] Result<CodeSignature> readMachOSignature(int descriptor, SignatureDetail detail);

// A code directory that lies in a file of its own, as in Contents/_CodeSignature/CodeDirectory of a bundle
// whose main executable is a script. Bytes behind its length are not looked at.
[[nodiscard]] Result<CodeSignature> readCodeDirectory(std::string_view bytes, SignatureDetail detail);

}  // namespace corvane
