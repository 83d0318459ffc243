#include "core/discovery/mach_o_signature.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <vector>

#include "base/atomic_file.h"
#include "core/discovery/folder_reader.h"

namespace corvane {
namespace {

// Named as in the file format's own description.
constexpr std::uint32_t kThin32 = 0xfeedface;
constexpr std::uint32_t kThin64 = 0xfeedfacf;
constexpr std::uint32_t kFat32 = 0xcafebabe;
constexpr std::uint32_t kFat64 = 0xcafebabf;
constexpr std::uint32_t kCpuX8664 = 0x01000007;
constexpr std::uint32_t kCpuArm64 = 0x0100000c;
constexpr std::uint32_t kCommandCodeSignature = 0x1d;
constexpr std::uint32_t kSuperBlob = 0xfade0cc0;
constexpr std::uint32_t kCodeDirectory = 0xfade0c02;
constexpr std::uint32_t kSlotCodeDirectory = 0;
constexpr std::uint32_t kSlotAlternateFirst = 0x1000;
constexpr std::uint32_t kSlotAlternateLast = 0x1004;
constexpr std::uint32_t kVersionWithTeam = 0x20200;

// A Java class begins with the same bytes as a universal file; its second word is a version above 40.
constexpr std::uint32_t kSliceLimit = 32;
constexpr std::uint32_t kCommandBytesLimit = 1U << 20U;
constexpr std::uint32_t kSlotLimit = 64;
constexpr std::uint32_t kDirectoryLimit = 64U << 20U;
constexpr std::size_t kNameLimit = 4096;
constexpr std::size_t kCodeDirectoryHeader = 44;
// One read of this size holds the headers and commands of nearly every program, and the names of its signature.
constexpr std::size_t kWindow = 8U << 10U;

std::unexpected<Error> damaged(std::string why) {
  return failure(SignatureError::domain, SignatureError::damaged, "the signature is damaged: " + std::move(why));
}
std::unexpected<Error> notMachO() {
  return failure(SignatureError::domain, SignatureError::notMachO, "the file is no Mach-O file");
}

// Bytes of a file or of memory, in one of the two byte orders. Reading past the end gives nothing.
class Bytes {
 public:
  Bytes(std::string_view bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}

  [[nodiscard]] std::optional<std::uint32_t> word(std::uint64_t at) const {
    if (at > bytes_.size() || bytes_.size() - at < 4) return std::nullopt;
    std::uint32_t value = 0;
    std::copy_n(bytes_.data() + at, 4, reinterpret_cast<char*>(&value));
    const bool swap = bigEndian_ != (std::endian::native == std::endian::big);
    return swap ? __builtin_bswap32(value) : value;
  }
  [[nodiscard]] std::optional<std::uint64_t> longWord(std::uint64_t at) const {
    const auto first = word(at);
    const auto second = word(at + 4);
    if (!first || !second) return std::nullopt;
    const auto high = std::uint64_t{bigEndian_ ? *first : *second};
    return (high << 32U) | (bigEndian_ ? *second : *first);
  }
  [[nodiscard]] std::optional<std::uint8_t> byte(std::uint64_t at) const {
    if (at >= bytes_.size()) return std::nullopt;
    return static_cast<std::uint8_t>(bytes_[at]);
  }
  [[nodiscard]] std::size_t size() const { return bytes_.size(); }

 private:
  std::string_view bytes_;
  bool bigEndian_;
};

// Short reads of an open file. The last one is kept: in small programs all that is asked for lies in it.
class Window {
 public:
  explicit Window(int descriptor) : descriptor_(descriptor) {}

  // `length` bytes at `offset`, less at the end of the file; valid until the next call. Fails with errno.
  [[nodiscard]] std::expected<std::string_view, int> read(std::uint64_t offset, std::size_t length) {
    if (offset < start_ || offset - start_ > filled_ || (filled_ - (offset - start_) < length && !reachesEnd_))
      if (const int problem = fill(offset, std::max(length, kWindow)); problem != 0) return std::unexpected(problem);
    const auto inside = static_cast<std::size_t>(offset - start_);
    return std::string_view(held_.data() + inside, std::min(length, filled_ - inside));
  }

 private:
  // A regular file gives less than was asked for only at its end.
  int fill(std::uint64_t offset, std::size_t length) {
    start_ = offset;
    filled_ = 0;
    reachesEnd_ = true;
    if (offset > static_cast<std::uint64_t>(INT64_MAX)) return 0;
    if (held_.size() < length) held_.resize(length);
    ssize_t count = 0;
    do {
      count = ::pread(descriptor_, held_.data(), length, static_cast<off_t>(offset));
    } while (count < 0 && errno == EINTR);
    if (count < 0) return errno;
    filled_ = static_cast<std::size_t>(count);
    reachesEnd_ = filled_ < length;
    return 0;
  }

  int descriptor_;
  std::uint64_t start_ = 0;
  std::size_t filled_ = 0;
  bool reachesEnd_ = false;
  std::string held_;
};

Error readError(int problem) { return fileError("Reading the signature of", "a program", problem); }

struct Slice {
  std::uint64_t offset = 0;
  std::uint32_t cpu = 0;
};

int preference(const Slice& slice) { return slice.cpu == kCpuArm64 ? 2 : slice.cpu == kCpuX8664 ? 1 : 0; }

// The offset of the program inside a universal file; 0 for a thin one.
Result<std::uint64_t> sliceOffset(Window& window) {
  const auto head = window.read(0, 8 + kSliceLimit * 32);
  if (!head) return std::unexpected(readError(head.error()));
  const auto magic = Bytes(*head, true).word(0);
  if (!magic) return notMachO();
  const bool swapped = *magic == __builtin_bswap32(kFat32) || *magic == __builtin_bswap32(kFat64);
  const auto upright = swapped ? __builtin_bswap32(*magic) : *magic;
  if (upright != kFat32 && upright != kFat64) return 0;

  const Bytes fat(*head, !swapped);
  const bool wide = upright == kFat64;
  const auto count = fat.word(4).value_or(0);
  if (count == 0 || count > kSliceLimit) return notMachO();
  std::optional<Slice> best;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto at = 8 + std::uint64_t{i} * (wide ? 32 : 20);
    const auto cpu = fat.word(at);
    const auto offset = wide ? fat.longWord(at + 8) : std::optional<std::uint64_t>(fat.word(at + 8));
    if (!cpu || !offset) return damaged("the list of slices ends early");
    const Slice slice{.offset = *offset, .cpu = *cpu};
    if (!best || preference(slice) > preference(*best)) best = slice;
  }
  return best->offset;
}

struct Region {
  std::uint64_t offset = 0;
  std::uint32_t size = 0;
};

// Where the signature lies, from the start of the file.
Result<Region> signatureRegion(Window& window, std::uint64_t slice) {
  const auto head = window.read(slice, 32);
  if (!head) return std::unexpected(readError(head.error()));
  const auto magic = Bytes(*head, true).word(0);
  if (!magic) return notMachO();
  const bool big = *magic == kThin32 || *magic == kThin64;
  const auto upright = big ? *magic : __builtin_bswap32(*magic);
  if (upright != kThin32 && upright != kThin64) return notMachO();
  const Bytes header(*head, big);
  const std::uint64_t headerSize = upright == kThin64 ? 32 : 28;
  const auto commandCount = header.word(16);
  const auto commandBytes = header.word(20);
  if (!commandCount || !commandBytes || *commandBytes > kCommandBytesLimit) return damaged("its header ends early");

  const auto commands = window.read(slice + headerSize, *commandBytes);
  if (!commands) return std::unexpected(readError(commands.error()));
  const Bytes list(*commands, big);
  std::uint64_t at = 0;
  for (std::uint32_t i = 0; i < *commandCount; ++i) {
    const auto command = list.word(at);
    const auto size = list.word(at + 4);
    if (!command || !size || *size < 8) return damaged("its load commands end early");
    if (*command == kCommandCodeSignature) {
      const auto offset = list.word(at + 8);
      const auto length = list.word(at + 12);
      if (!offset || !length) return damaged("its load commands end early");
      return Region{.offset = slice + *offset, .size = *length};
    }
    at += *size;
  }
  return failure(SignatureError::domain, SignatureError::notSigned, "the program is not signed");
}

std::optional<std::string> textAt(std::string_view directory, std::uint32_t offset) {
  if (offset < kCodeDirectoryHeader || offset >= directory.size()) return std::nullopt;
  const auto rest = directory.substr(offset, kNameLimit);
  const auto end = rest.find('\0');
  if (end == std::string_view::npos) return std::nullopt;
  return std::string(rest.substr(0, end));
}

// How the system ranks the kinds of hash of a code directory; 0 for one it does not know.
int hashRank(std::uint8_t type) {
  switch (type) {
    case 1:
      return 1;  // SHA-1
    case 3:
      return 2;  // SHA-256, cut to 20 bytes
    case 2:
      return 3;  // SHA-256
    case 4:
      return 4;  // SHA-384
    case 5:
      return 5;  // SHA-512
    default:
      return 0;
  }
}

const EVP_MD* digestOf(std::uint8_t type) {
  switch (type) {
    case 1:
      return EVP_sha1();
    case 2:
    case 3:
      return EVP_sha256();
    case 4:
      return EVP_sha384();
    case 5:
      return EVP_sha512();
    default:
      return nullptr;
  }
}

// Every kind is cut to the 20 bytes that SHA-1 has.
std::optional<std::string> cdhashOf(std::string_view directory, std::uint8_t type) {
  constexpr std::size_t kHashBytes = 20;
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto* kind = digestOf(type);
  std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
  if (kind == nullptr || EVP_Digest(directory.data(), directory.size(), digest.data(), nullptr, kind, nullptr) != 1)
    return std::nullopt;
  std::string text;
  for (std::size_t i = 0; i < kHashBytes; ++i) {
    text += kDigits[digest[i] >> 4U];
    text += kDigits[digest[i] & 15U];
  }
  return text;
}

// `bytes` hold at least the names of the directory; all of it when the hash is wanted.
Result<CodeSignature> parseDirectory(std::string_view bytes, SignatureDetail detail) {
  const Bytes header(bytes, true);
  const auto length = header.word(4);
  if (header.word(0) != kCodeDirectory || !length || *length < kCodeDirectoryHeader)
    return damaged("it has no code directory");
  const auto directory = bytes.substr(0, *length);
  const auto identifier = textAt(directory, header.word(20).value_or(0));
  if (!identifier) return damaged("its identifier lies outside");
  CodeSignature signature{.identifier = *identifier, .teamIdentifier = {}, .cdhash = {}};
  if (header.word(8).value_or(0) >= kVersionWithTeam) {
    const auto offset = header.word(48).value_or(0);
    if (offset != 0) {
      signature.teamIdentifier = textAt(directory, offset);
      if (!signature.teamIdentifier) return damaged("its team lies outside");
      if (signature.teamIdentifier->empty()) signature.teamIdentifier.reset();
    }
  }
  if (detail == SignatureDetail::namesAndHash) {
    if (directory.size() < *length) return damaged("its code directory ends early");
    signature.cdhash = cdhashOf(directory, header.byte(37).value_or(0));
    if (!signature.cdhash) return damaged("its kind of hash is unknown");
  }
  return signature;
}

struct Directory {
  std::uint64_t offset = 0;
  std::uint32_t length = 0;
  std::uint8_t hashType = 0;
};

// The code directory with the strongest hash among those of the signature.
Result<Directory> strongestDirectory(Window& window, const Region& region) {
  const auto head = window.read(region.offset, 12 + std::size_t{kSlotLimit} * 8);
  if (!head) return std::unexpected(readError(head.error()));
  const Bytes blob(head->substr(0, region.size), true);
  const auto count = blob.word(8);
  if (blob.word(0) != kSuperBlob || !count || *count > kSlotLimit) return damaged("its index is none");
  std::vector<std::uint32_t> offsets;
  for (std::uint32_t i = 0; i < *count; ++i) {
    const auto slot = blob.word(12 + std::uint64_t{i} * 8);
    const auto offset = blob.word(16 + std::uint64_t{i} * 8);
    if (!slot || !offset) return damaged("its index ends early");
    if (*slot == kSlotCodeDirectory || (*slot >= kSlotAlternateFirst && *slot <= kSlotAlternateLast))
      offsets.push_back(*offset);
  }
  Directory best;
  for (const auto offset : offsets) {
    if (offset >= region.size) return damaged("a code directory lies outside");
    const auto start = window.read(region.offset + offset, kCodeDirectoryHeader);
    if (!start) return std::unexpected(readError(start.error()));
    const Bytes header(*start, true);
    const auto length = header.word(4).value_or(0);
    const auto type = header.byte(37).value_or(0);
    if (length > region.size - offset) return damaged("a code directory is longer than the signature");
    if (best.length == 0 || hashRank(type) > hashRank(best.hashType))
      best = {.offset = region.offset + offset, .length = length, .hashType = type};
  }
  if (best.length == 0) return damaged("it has no code directory");
  if (best.length > kDirectoryLimit) return damaged("its code directory is too large");
  return best;
}

}  // namespace

Result<CodeSignature> readCodeDirectory(std::string_view bytes, SignatureDetail detail) {
  return parseDirectory(bytes, detail);
}

Result<CodeSignature> readMachOSignature(int descriptor, SignatureDetail detail) {
  Window window(descriptor);
  const auto slice = sliceOffset(window);
  if (!slice) return std::unexpected(slice.error());
  const auto region = signatureRegion(window, *slice);
  if (!region) return std::unexpected(region.error());
  const auto directory = strongestDirectory(window, *region);
  if (!directory) return std::unexpected(directory.error());
  // The names stand right behind the header, in front of the hashes.
  constexpr std::size_t kNamesReach = 1024;
  if (detail == SignatureDetail::names) {
    const auto start = window.read(directory->offset, std::min<std::size_t>(directory->length, kNamesReach));
    if (!start) return std::unexpected(readError(start.error()));
    if (auto signature = parseDirectory(*start, detail)) return signature;
  }
  const auto whole = window.read(directory->offset, directory->length);
  if (!whole) return std::unexpected(readError(whole.error()));
  return parseDirectory(*whole, detail);
}

Result<CodeSignature> readMachOSignature(const std::filesystem::path& file, SignatureDetail detail) {
  const auto opened = Descriptor::openFileAt(AT_FDCWD, file.c_str());
  if (!opened) return std::unexpected(fileError("Opening", file, opened.error()));
  return readMachOSignature(opened->get(), detail);
}

}  // namespace corvane
