#include "notifications/base64.h"

#include <openssl/evp.h>

#include <algorithm>

namespace corvane {

namespace {

// The library counts in `int`, so longer texts go in parts; each but the last is whole groups.
constexpr std::size_t kGroup = 3;
constexpr std::size_t kWrittenGroup = 4;
constexpr std::size_t kGroupsAtOnce = 1U << 20U;

const unsigned char* raw(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

}  // namespace

std::string base64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + kGroup - 1) / kGroup * kWrittenGroup);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kGroup * kGroupsAtOnce))) {
    const auto part = bytes.substr(0, kGroup * kGroupsAtOnce);
    std::string written((part.size() + kGroup - 1) / kGroup * kWrittenGroup + 1, '\0');  // and the library's zero
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(written.data()), raw(part), static_cast<int>(part.size()));
    written.pop_back();
    text += written;
  }
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  if (text.size() % kWrittenGroup != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string bytes;
  bytes.reserve(text.size() / kWrittenGroup * kGroup);
  for (auto rest = text; !rest.empty(); rest.remove_prefix(std::min(rest.size(), kWrittenGroup * kGroupsAtOnce))) {
    const auto part = rest.substr(0, kWrittenGroup * kGroupsAtOnce);
    std::string read(part.size() / kWrittenGroup * kGroup, '\0');
    const auto count =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(read.data()), raw(part), static_cast<int>(part.size()));
    if (count != static_cast<int>(read.size())) return std::nullopt;
    bytes += read;
  }
  bytes.resize(bytes.size() - padding);  // the library reads it as zero bytes
  // It forgives white space and stray bits; what it forgave is not written back.
  return base64(bytes) == text ? std::optional(bytes) : std::nullopt;
}

}  // namespace corvane
