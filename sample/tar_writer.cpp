#include "sample/tar_writer.h"

#include <fmt/format.h>

#include <cstring>
#include <numeric>
#include <utility>

#include "sample/files.h"

namespace corvane::sample {

namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kNameLimit = 100;
constexpr std::size_t kPrefixLimit = 155;

struct UstarHeader {
  char name[100];
  char mode[8];
  char uid[8];
  char gid[8];
  char size[12];
  char modified[12];
  char checksum[8];
  char kind;
  char link[100];
  char magic[6];
  char version[2];
  char owner[32];
  char group[32];
  char deviceMajor[8];
  char deviceMinor[8];
  char prefix[155];
  char rest[12];
};
static_assert(sizeof(UstarHeader) == kBlock);

void set(char* field, std::string_view text) { std::memcpy(field, text.data(), text.size()); }

// Where the name begins: behind the first slash that leaves few enough bytes.
std::size_t splitAt(std::string_view path) {
  if (path.size() <= kNameLimit) return 0;
  const auto slash = path.find('/', path.size() - kNameLimit - 1);
  if (slash == std::string_view::npos || slash > kPrefixLimit)
    throw MakingFailed(fmt::format("The path is too long for an archive: {}", path));
  return slash + 1;
}

}  // namespace

void TarWriter::file(std::string_view path, std::string_view bytes, mode_t mode) {
  UstarHeader header{};
  const auto nameAt = splitAt(path);
  set(header.name, path.substr(nameAt));
  if (nameAt > 0) set(header.prefix, path.substr(0, nameAt - 1));
  set(header.mode, fmt::format("{:07o}", mode));
  set(header.uid, "0000000");
  set(header.gid, "0000000");
  set(header.size, fmt::format("{:011o}", bytes.size()));
  set(header.modified, "14000000000");  // a fixed instant of 2021
  header.kind = '0';
  set(header.magic, "ustar");
  set(header.version, "00");
  set(header.checksum, "        ");
  const auto* first = reinterpret_cast<const unsigned char*>(&header);
  set(header.checksum, fmt::format("{:06o}", std::accumulate(first, first + kBlock, 0U)));
  header.checksum[6] = '\0';
  archive_.append(reinterpret_cast<const char*>(&header), kBlock);
  archive_ += bytes;
  archive_.resize((archive_.size() + kBlock - 1) / kBlock * kBlock);
}

std::string TarWriter::finish() {
  archive_.resize(archive_.size() + 2 * kBlock);
  return std::exchange(archive_, {});
}

}  // namespace corvane::sample
