// Small signed Mach-O files, for sample trees and tests: a header, one code-signature command, a few bytes of code
// and a signature with a real code directory. They run nowhere.
#pragma once

#include <openssl/sha.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::mach_o {

enum class Architecture : std::uint32_t { x86_64 = 0x01000007, arm64 = 0x0100000c };
enum class HashType : std::uint8_t { sha1 = 1, sha256 = 2 };
enum class FatHeader { bits32, bits64, swapped32 };

struct Signing {
  std::string identifier;
  std::string team;  // empty for an ad-hoc signature
  HashType hash = HashType::sha256;
};

inline void appendWord(std::string& into, std::uint64_t value, int bytes, bool bigEndian) {
  for (int i = 0; i < bytes; ++i) into += static_cast<char>(value >> (8 * (bigEndian ? bytes - 1 - i : i)));
}
inline void append32(std::string& into, std::uint64_t value, bool bigEndian = true) {
  appendWord(into, value, 4, bigEndian);
}

inline std::string digest(std::string_view bytes, HashType type) {
  unsigned char out[SHA256_DIGEST_LENGTH] = {};
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  if (type == HashType::sha1)
    SHA1(data, bytes.size(), out);
  else
    SHA256(data, bytes.size(), out);
  return {reinterpret_cast<const char*>(out), type == HashType::sha1 ? std::size_t{20} : std::size_t{32}};
}

// The code directory over `code`, as it also stands alone in Contents/_CodeSignature/CodeDirectory.
inline std::string codeDirectory(const Signing& signing, std::string_view code) {
  constexpr std::size_t kPage = 4096;
  constexpr std::uint32_t kHeader = 52;  // version 0x20200, which brings the team
  const std::size_t pages = (code.size() + kPage - 1) / kPage;
  const std::size_t hashSize = signing.hash == HashType::sha1 ? 20 : 32;
  std::string names = signing.identifier + '\0';
  const std::size_t teamOffset = signing.team.empty() ? 0 : kHeader + names.size();
  if (!signing.team.empty()) names += signing.team + '\0';
  const std::size_t hashOffset = kHeader + names.size();

  std::string bytes;
  append32(bytes, 0xfade0c02);
  append32(bytes, hashOffset + pages * hashSize);
  append32(bytes, 0x20200);
  append32(bytes, signing.team.empty() ? 2 : 0);  // flags: 2 is ad-hoc
  append32(bytes, hashOffset);
  append32(bytes, kHeader);
  append32(bytes, 0);  // special slots
  append32(bytes, pages);
  append32(bytes, code.size());
  bytes += static_cast<char>(hashSize);
  bytes += static_cast<char>(signing.hash);
  bytes += '\0';
  bytes += static_cast<char>(12);  // page size as a power of two
  append32(bytes, 0);
  append32(bytes, 0);  // scatter
  append32(bytes, teamOffset);
  bytes += names;
  for (std::size_t i = 0; i < pages; ++i) bytes += digest(code.substr(i * kPage, kPage), signing.hash);
  return bytes;
}

// The cdhash as people write it.
inline std::string cdhash(const Signing& signing, std::string_view code) {
  std::string text;
  for (const char byte : digest(codeDirectory(signing, code), signing.hash).substr(0, 20)) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4U];
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 15U];
  }
  return text;
}

// The signature's container: the first directory in its own slot, the others as alternates.
inline std::string superBlob(const std::vector<std::string>& directories) {
  std::string index;
  std::string blobs;
  const std::size_t head = 12 + directories.size() * 8;
  for (std::size_t i = 0; i < directories.size(); ++i) {
    append32(index, i == 0 ? 0 : 0x1000 + i - 1);
    append32(index, head + blobs.size());
    blobs += directories[i];
  }
  std::string bytes;
  append32(bytes, 0xfade0cc0);
  append32(bytes, head + blobs.size());
  append32(bytes, directories.size());
  return bytes + index + blobs;
}

struct ThinOptions {
  Architecture architecture = Architecture::arm64;
  std::size_t codeBytes = 64;
  bool isSigned = true;
  bool bigEndian = false;
};

// The bytes that a thin file's code directory covers.
inline std::string unsignedThin(const ThinOptions& options = {}) {
  const std::uint32_t commandBytes = options.isSigned ? 16 : 0;
  const bool big = options.bigEndian;
  std::string bytes;
  append32(bytes, 0xfeedfacf, big);
  append32(bytes, static_cast<std::uint32_t>(options.architecture), big);
  append32(bytes, 0, big);
  append32(bytes, 2, big);  // an executable
  append32(bytes, options.isSigned ? 1 : 0, big);
  append32(bytes, commandBytes, big);
  append32(bytes, 0, big);
  append32(bytes, 0, big);
  if (options.isSigned) {
    append32(bytes, 0x1d, big);
    append32(bytes, 16, big);
    append32(bytes, 32 + commandBytes + options.codeBytes, big);
    append32(bytes, 0, big);  // the signature's size, which thin() fills in
  }
  return bytes + std::string(options.codeBytes, '\x90');
}

inline std::string withSignature(std::string program, std::string_view signature, bool bigEndian = false) {
  std::string size;
  append32(size, signature.size(), bigEndian);
  program.replace(44, 4, size);
  return program + std::string(signature);
}

// A thin file, signed once for each of `signings`. The directories cover the program with its size field at 0.
inline std::string thin(const std::vector<Signing>& signings, ThinOptions options = {}) {
  options.isSigned = !signings.empty();
  const auto program = unsignedThin(options);
  if (signings.empty()) return program;
  std::vector<std::string> directories;
  for (const auto& signing : signings) directories.push_back(codeDirectory(signing, program));
  return withSignature(program, superBlob(directories), options.bigEndian);
}

struct Slice {
  Architecture architecture = Architecture::arm64;
  std::string bytes;
};

inline std::string universal(const std::vector<Slice>& slices, FatHeader header = FatHeader::bits32) {
  constexpr std::size_t kAlign = 4096;
  const bool wide = header == FatHeader::bits64;
  const bool big = header != FatHeader::swapped32;
  std::string bytes;
  append32(bytes, wide ? 0xcafebabf : 0xcafebabe, big);
  append32(bytes, slices.size(), big);
  std::size_t offset = kAlign;
  for (const auto& slice : slices) {
    append32(bytes, static_cast<std::uint32_t>(slice.architecture), big);
    append32(bytes, 0, big);
    appendWord(bytes, offset, wide ? 8 : 4, big);
    appendWord(bytes, slice.bytes.size(), wide ? 8 : 4, big);
    append32(bytes, 12, big);
    if (wide) append32(bytes, 0, big);
    offset += (slice.bytes.size() + kAlign - 1) / kAlign * kAlign;
  }
  for (const auto& slice : slices) {
    bytes.resize((bytes.size() + kAlign - 1) / kAlign * kAlign);
    bytes += slice.bytes;
  }
  return bytes;
}

}  // namespace corvane::mach_o
