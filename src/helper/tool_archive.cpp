#include "helper/tool_archive.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kBlock = 512;

std::unexpected<Error> broken(std::string_view why) {
  return failure("CRVArchive", 1, fmt::format("The archive cannot be used: {}", why));
}

// The decompressor with its memory.
class Inflater {
 public:
  Inflater() { ready_ = inflateInit2(&stream_, 16 + MAX_WBITS) == Z_OK; }
  ~Inflater() {
    if (ready_) inflateEnd(&stream_);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  Result<std::string> run(std::string_view bytes, std::size_t limit) {
    if (!ready_) return broken("no memory");
    std::string out;
    std::array<char, 64U << 10U> chunk{};
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream_.avail_in = static_cast<uInt>(bytes.size());
    for (int state = Z_OK; state != Z_STREAM_END;) {
      stream_.next_out = reinterpret_cast<Bytef*>(chunk.data());
      stream_.avail_out = static_cast<uInt>(chunk.size());
      state = inflate(&stream_, Z_NO_FLUSH);
      const auto got = chunk.size() - stream_.avail_out;
      if (state != Z_OK && state != Z_STREAM_END) return broken("its compressed stream is damaged or torn");
      if (out.size() + got > limit) return broken("it is too large");
      out.append(chunk.data(), got);
    }
    return out;
  }

 private:
  z_stream stream_{};
  bool ready_ = false;
};

std::string_view textAt(std::string_view header, std::size_t at, std::size_t size) {
  const auto field = header.substr(at, size);
  return field.substr(0, field.find('\0'));
}

std::optional<std::size_t> octalAt(std::string_view header, std::size_t at, std::size_t size) {
  auto text = textAt(header, at, size);
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 8);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool hasRightSum(std::string_view header) {
  std::size_t sum = 0;
  for (std::size_t i = 0; i < kBlock; ++i) sum += i >= 148 && i < 156 ? ' ' : static_cast<unsigned char>(header[i]);
  return octalAt(header, 148, 8) == sum;
}

// The path of an extended header ("25 path=a/long/path\n" among its records); absent when it sets none.
Result<std::optional<std::string>> extendedPath(std::string_view records) {
  std::optional<std::string> path;
  while (!records.empty()) {
    std::size_t size = 0;
    const auto [end, error] = std::from_chars(records.data(), records.data() + records.size(), size);
    const auto head = static_cast<std::size_t>(end - records.data()) + 1;
    if (error != std::errc() || size > records.size() || size < head + 1 || records[head - 1] != ' ' ||
        records[size - 1] != '\n')
      return broken("an extended header is damaged");
    const auto record = records.substr(head, size - head - 1);
    if (record.starts_with("path=")) path = record.substr(5);
    if (record.starts_with("size=")) return broken("a file is too large");
    records.remove_prefix(size);
  }
  return path;
}

bool isSafe(std::string_view path) {
  if (path.ends_with('/')) path.remove_suffix(1);
  if (path.empty() || path.find('\0') != std::string_view::npos) return false;
  while (!path.empty()) {
    const auto part = path.substr(0, path.find('/'));
    if (part.empty() || part == "." || part == "..") return false;
    path.remove_prefix(std::min(path.size(), part.size() + 1));
  }
  return true;
}

class TarReader {
 public:
  TarReader(std::string_view bytes, const ArchiveLimits& limits) : rest_(bytes), limits_(limits) {}

  Result<ArchiveFiles> read(const std::function<bool(std::string_view)>& wanted) {
    for (std::size_t entries = 0;; ++entries) {
      if (rest_.size() < kBlock) return broken("it is torn");
      const auto header = rest_.substr(0, kBlock);
      if (header.find_first_not_of('\0') == std::string_view::npos) return std::move(files_);
      if (entries == limits_.entries) return broken("it has too many entries");
      if (auto taken = takeEntry(header, wanted); !taken) return std::unexpected(taken.error());
    }
  }

 private:
  Status takeEntry(std::string_view header, const std::function<bool(std::string_view)>& wanted) {
    const auto size = octalAt(header, 124, 12);
    if (!hasRightSum(header) || !size) return broken("a header is damaged");
    const auto padded = (*size + kBlock - 1) / kBlock * kBlock;
    if (*size > limits_.fileSize) return broken("a file is too large");
    if (rest_.size() - kBlock < padded) return broken("it is torn");
    const auto content = rest_.substr(kBlock, *size);
    rest_.remove_prefix(kBlock + padded);
    const char type = header[156];
    if (type == 'g') return {};
    if (type == 'x') {
      auto path = extendedPath(content);
      if (!path) return std::unexpected(path.error());
      longPath_ = std::move(*path);
      return {};
    }
    const auto path = std::exchange(longPath_, std::nullopt).value_or(pathIn(header));
    if (type == 'L') return broken("it is of a kind that is not read");
    return takeFile(path, type, content, wanted);
  }

  static std::string pathIn(std::string_view header) {
    const std::string name(textAt(header, 0, 100));
    const bool hasPrefix = header.substr(257, 6) == std::string_view("ustar\0", 6);
    const auto prefix = hasPrefix ? textAt(header, 345, 155) : std::string_view();
    return prefix.empty() ? name : fmt::format("{}/{}", prefix, name);
  }

  Status takeFile(const std::string& path, char type, std::string_view content,
                  const std::function<bool(std::string_view)>& wanted) {
    if (!isSafe(path)) return broken("a path leads out of it");
    const auto slash = path.find('/');
    const auto top = path.substr(0, slash);
    const bool isFile = type == '0' || type == '\0';
    if (isFile && slash == std::string::npos) return broken("a file lies outside of its folder");
    if (top_.empty()) top_ = top;
    if (top != top_) return broken("it has several outermost folders");
    if (!isFile) return {};
    const auto below = path.substr(slash + 1);
    if (!wanted(below)) return {};
    if (!files_.emplace(below, content).second) return broken("a file is in it twice");
    return {};
  }

  std::string_view rest_;
  ArchiveLimits limits_;
  std::optional<std::string> longPath_;
  std::string top_;
  ArchiveFiles files_;
};

}  // namespace

Result<ArchiveFiles> readToolArchive(std::string_view bytes, const std::function<bool(std::string_view)>& wanted,
                                     const ArchiveLimits& limits) {
  const auto tar = Inflater().run(bytes, limits.unpacked);
  if (!tar) return std::unexpected(tar.error());
  return TarReader(*tar, limits).read(wanted);
}

}  // namespace corvane
