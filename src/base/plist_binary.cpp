#include <bit>
#include <cmath>
#include <limits>

#include "base/plist_readers.h"

namespace corvane {
namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kTrailer = 32;

// A shared object is copied at every place that names it; a small file could so grow without end. What a real
// list comes to is in proportion to its size; a small one may share as it likes.
constexpr std::size_t kWeightPerByte = 128;
constexpr std::size_t kSpareWeight = 1U << 20U;
constexpr std::size_t kNodeWeight = 64;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char c : bytes) value = value << 8U | static_cast<std::uint8_t>(c);
  return value;
}

class BinaryReader {
 public:
  explicit BinaryReader(std::string_view bytes)
      : bytes_(bytes), weightLeft_(kWeightPerByte * bytes.size() + kSpareWeight) {}

  Result<PlistValue> read() {
    if (!readTrailer()) return plistFailure("The binary property list has a damaged trailer.");
    onPath_.resize(count_);
    auto root = object(top_, 0);
    if (!root) return plistFailure("The binary property list is damaged: " + problem_ + ".");
    return std::move(*root);
  }

 private:
  using Maybe = std::optional<PlistValue>;

  bool readTrailer() {
    if (bytes_.size() < kHeader + kTrailer) return false;
    const auto trailer = bytes_.substr(bytes_.size() - kTrailer);
    offsetSize_ = static_cast<std::uint8_t>(trailer[6]);
    refSize_ = static_cast<std::uint8_t>(trailer[7]);
    count_ = bigEndian(trailer.substr(8, 8));
    top_ = bigEndian(trailer.substr(16, 8));
    table_ = bigEndian(trailer.substr(24, 8));
    if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8) return false;
    if (table_ < kHeader || table_ > bytes_.size() - kTrailer) return false;
    return count_ > 0 && top_ < count_ && count_ <= (bytes_.size() - kTrailer - table_) / offsetSize_;
  }

  std::nullopt_t fail(std::string_view problem) {
    if (problem_.empty()) problem_ = problem;
    return std::nullopt;
  }

  // `length` bytes at `at`, all of them before the offset table.
  std::optional<std::string_view> span(std::uint64_t at, std::uint64_t length) {
    if (at > table_ || length > table_ - at) return fail("an object reaches beyond its place");
    return bytes_.substr(at, length);
  }

  bool spend(std::size_t weight) {
    if (weight > weightLeft_) {
      fail("it grows without bounds");
      return false;
    }
    weightLeft_ -= weight;
    return true;
  }

  Maybe object(std::uint64_t index, int depth) {
    if (index >= count_) return fail("a reference leads nowhere");
    if (onPath_[index]) return fail("a value contains itself");
    if (depth > kMostPlistDepth) return fail("it is nested too deeply");
    if (!spend(kNodeWeight)) return std::nullopt;
    const auto offset = bigEndian(bytes_.substr(table_ + index * offsetSize_, offsetSize_));
    const auto marker = span(offset, 1);
    if (offset < kHeader || !marker) return fail("an object lies outside the file");
    onPath_[index] = true;
    auto value = byMarker(static_cast<std::uint8_t>(marker->front()), offset + 1, depth);
    onPath_[index] = false;
    return value;
  }

  Maybe byMarker(std::uint8_t marker, std::uint64_t at, int depth) {
    const unsigned low = marker & 0xFU;
    switch (marker >> 4U) {
      case 0x0:
        return simple(low);
      case 0x1:
        return low <= 4 ? integer(at, 1U << low) : fail("an integer has an impossible size");
      case 0x2:
        return real(at, low);
      case 0x3:
        return low == 3 ? date(at) : fail("a date has an impossible size");
      case 0x8:
        return uid(at, low + 1U);
      default:
        return counted(marker, at, depth);
    }
  }

  Maybe simple(unsigned low) {
    if (low == 0) return PlistValue();
    if (low == 8 || low == 9) return PlistValue(low == 9);
    return fail("an object is of an unknown kind");
  }

  // One, two and four bytes are unsigned, eight are signed; sixteen hold what needs the 64th bit unsigned.
  Maybe integer(std::uint64_t at, unsigned size) {
    const auto raw = span(at, size);
    if (!raw) return std::nullopt;
    const auto low = bigEndian(raw->substr(size > 8 ? size - 8 : 0));
    if (size == 16 && bigEndian(raw->substr(0, 8)) == 0 && low > std::numeric_limits<std::int64_t>::max())
      return PlistValue(static_cast<double>(low));
    return PlistValue(static_cast<std::int64_t>(low));
  }

  Maybe real(std::uint64_t at, unsigned low) {
    if (low != 2 && low != 3) return fail("a number has an impossible size");
    const auto raw = span(at, 1U << low);
    if (!raw) return std::nullopt;
    if (low == 2)
      return PlistValue(static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(*raw)))));
    return PlistValue(std::bit_cast<double>(bigEndian(*raw)));
  }

  Maybe date(std::uint64_t at) {
    const auto raw = span(at, 8);
    if (!raw) return std::nullopt;
    const auto seconds = std::bit_cast<double>(bigEndian(*raw));
    if (!std::isfinite(seconds)) return fail("a date is no number");
    return PlistValue(dateFromSecondsSince2001(seconds));
  }

  // In the form that the XML side has for it.
  Maybe uid(std::uint64_t at, unsigned size) {
    const auto raw = size <= 8 ? span(at, size) : std::nullopt;
    if (!raw) return fail("an identifier has an impossible size");
    return PlistValue(PlistDict{{"CF$UID", static_cast<std::int64_t>(bigEndian(*raw))}});
  }

  // A count in the marker, or in an integer behind it; moves `at` past that.
  std::optional<std::uint64_t> countOf(std::uint8_t marker, std::uint64_t& at) {
    if ((marker & 0xFU) != 0xFU) return marker & 0xFU;
    const auto sizeMarker = span(at, 1);
    if (!sizeMarker) return std::nullopt;
    const auto kind = static_cast<std::uint8_t>(sizeMarker->front());
    if (kind >> 4U != 1 || (kind & 0xFU) > 3) return fail("a length is no integer");
    const auto raw = span(at + 1, 1U << (kind & 0xFU));
    if (!raw) return std::nullopt;
    at += 1 + raw->size();
    return bigEndian(*raw);
  }

  Maybe counted(std::uint8_t marker, std::uint64_t at, int depth) {
    const auto count = countOf(marker, at);
    if (!count) return std::nullopt;
    if (*count > bytes_.size()) return fail("a length goes beyond the file");
    switch (marker >> 4U) {
      case 0x4:
        return bytes(at, *count);
      case 0x5:
        return latin(at, *count);
      case 0x6:
        return utf16(at, *count);
      case 0xA:
        return array(at, *count, depth);
      case 0xD:
        return dict(at, *count, depth);
      default:
        return fail("an object is of an unknown kind");
    }
  }

  Maybe bytes(std::uint64_t at, std::uint64_t count) {
    const auto raw = span(at, count);
    if (!raw || !spend(count)) return std::nullopt;
    return PlistValue(PlistData{std::string(*raw)});
  }

  Maybe latin(std::uint64_t at, std::uint64_t count) {
    const auto raw = span(at, count);
    if (!raw || !spend(count)) return std::nullopt;
    std::string text;
    text.reserve(count);
    for (const char c : *raw) appendUtf8(text, static_cast<std::uint8_t>(c));
    return PlistValue(std::move(text));
  }

  Maybe utf16(std::uint64_t at, std::uint64_t count) {
    const auto raw = span(at, 2 * count);
    if (!raw || !spend(2 * count)) return std::nullopt;
    const auto unit = [&raw](std::size_t i) { return static_cast<char32_t>(bigEndian(raw->substr(2 * i, 2))); };
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      auto point = unit(i);
      if (point >= 0xD800 && point < 0xDC00 && i + 1 < count && (unit(i + 1) & 0xFC00U) == 0xDC00)
        point = 0x10000 + ((point & 0x3FFU) << 10U) + (unit(++i) & 0x3FFU);
      appendUtf8(text, point);
    }
    return PlistValue(std::move(text));
  }

  Maybe array(std::uint64_t at, std::uint64_t count, int depth) {
    const auto refs = span(at, count * refSize_);
    if (!refs) return std::nullopt;
    PlistArray items;
    for (std::size_t i = 0; i < count; ++i) {
      auto item = object(bigEndian(refs->substr(i * refSize_, refSize_)), depth + 1);
      if (!item) return std::nullopt;
      items.push_back(std::move(*item));
    }
    return PlistValue(std::move(items));
  }

  Maybe dict(std::uint64_t at, std::uint64_t count, int depth) {
    const auto refs = span(at, 2 * count * refSize_);
    if (!refs) return std::nullopt;
    PlistDict entries;
    for (std::size_t i = 0; i < count; ++i) {
      const auto key = object(bigEndian(refs->substr(i * refSize_, refSize_)), depth + 1);
      if (!key) return std::nullopt;
      if (!key->string()) return fail("a key is no text");
      auto value = object(bigEndian(refs->substr((count + i) * refSize_, refSize_)), depth + 1);
      if (!value) return std::nullopt;
      entries.insert_or_assign(std::string(*key->string()), std::move(*value));
    }
    return PlistValue(std::move(entries));
  }

  std::string_view bytes_;
  std::size_t weightLeft_;
  std::size_t offsetSize_ = 0;
  std::size_t refSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t top_ = 0;
  std::uint64_t table_ = 0;
  std::vector<bool> onPath_;
  std::string problem_;
};

}  // namespace

Result<PlistValue> readBinaryPlist(std::string_view bytes) { return BinaryReader(bytes).read(); }

void appendUtf8(std::string& out, char32_t point) {
  if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) point = 0xFFFD;
  const auto tail = [&out, point](unsigned shift) { out += static_cast<char>(0x80U | (point >> shift & 0x3FU)); };
  if (point < 0x80) {
    out += static_cast<char>(point);
  } else if (point < 0x800) {
    out += static_cast<char>(0xC0U | point >> 6U);
    tail(0);
  } else if (point < 0x10000) {
    out += static_cast<char>(0xE0U | point >> 12U);
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | point >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace corvane
