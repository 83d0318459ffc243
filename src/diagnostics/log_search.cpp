#include "diagnostics/log_search.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "base/ascii.h"

namespace corvane {
namespace {

// The code point at the front of [at, end), of which it takes at least a byte; below zero for none.
UChar32 takePoint(const char*& at, const char* end) {
  std::int32_t taken = 0;
  UChar32 point = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(at);
  U8_NEXT(bytes, taken, static_cast<std::int32_t>(std::min<std::ptrdiff_t>(end - at, 4)), point);
  at += taken;
  return point;
}

std::string lowerCased(std::string_view text) {
  std::string lower;
  for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
    const char* const begin = at;
    const auto point = takePoint(at, end);
    if (point < 0) {
      lower.append(begin, at);
      continue;
    }
    std::array<char, U8_MAX_LENGTH> room{};
    std::int32_t size = 0;
    U8_APPEND_UNSAFE(room.data(), size, u_tolower(point));
    lower.append(room.data(), static_cast<std::size_t>(size));
  }
  return lower;
}

char firstByteOf(UChar32 point) {
  std::array<char, U8_MAX_LENGTH> room{};
  std::int32_t size = 0;
  U8_APPEND_UNSAFE(room.data(), size, point);
  return room.front();
}

bool isLowerLetter(char c) { return c >= 'a' && c <= 'z'; }

}  // namespace

LogSearch::Anchor::Bytes LogSearch::Anchor::like(const char* from) const {
  Bytes bytes;
  std::memcpy(&bytes, from, kLanes);
  return ((bytes | set) & kept) == value;
}

LogSearch::LogSearch(std::string_view wanted) : wanted_(lowerCased(trimmed(wanted))) {
  if (wanted_.empty()) return;
  for (const char c : wanted_) folds_ += isLowerLetter(c) ? '\x20' : '\0';
  isAscii_ = std::ranges::all_of(wanted_, [](char c) { return static_cast<std::uint8_t>(c) < 0x80; });
  if (isAscii_) {
    first_ = anchorOf(wanted_.front());
    last_ = anchorOf(wanted_.back());
    lastAt_ = wanted_.size() - 1;
  } else {
    first_ = last_ = firstOfOtherScript();
  }
}

LogSearch::Anchor LogSearch::anchorOf(char lowerCased) {
  return {static_cast<std::uint8_t>(isLowerLetter(lowerCased) ? 0x20 : 0), 0xff, static_cast<std::uint8_t>(lowerCased)};
}

// The letter may stand there in either case, and the two may begin with different bytes.
LogSearch::Anchor LogSearch::firstOfOtherScript() const {
  const char* at = wanted_.data();
  const auto point = takePoint(at, at + wanted_.size());
  if (point < 0x80) return anchorOf(wanted_.front());
  for (const auto other : {u_toupper(point), u_totitle(point)})
    if (firstByteOf(other) != wanted_.front()) return {0, 0x80, 0x80};
  return {0, 0xff, static_cast<std::uint8_t>(wanted_.front())};
}

bool LogSearch::standsAt(const char* at, const char* end) const {
  if (!isAscii_) return standsInOtherScriptAt(at, end);
  for (std::size_t i = 0; i < wanted_.size(); ++i)
    if ((at[i] | folds_[i]) != wanted_[i]) return false;
  return true;
}

bool LogSearch::standsInOtherScriptAt(const char* at, const char* end) const {
  const char* wanted = wanted_.data();
  const char* const wantedEnd = wanted + wanted_.size();
  while (wanted != wantedEnd) {
    if (at == end) return false;
    const auto theirs = takePoint(at, end);
    const auto ours = takePoint(wanted, wantedEnd);
    if ((theirs < 0 ? theirs : u_tolower(theirs)) != ours) return false;
  }
  return true;
}

// Where both the first and the last byte are like those wanted, a find may begin.
bool LogSearch::standsAmong(const char* from, const char* end) const {
  using Halves = std::array<std::uint64_t, 2>;
  const auto candidates = std::bit_cast<Halves>(first_.like(from) & last_.like(from + lastAt_));
  if ((candidates[0] | candidates[1]) == 0) return false;
  for (std::size_t half = 0; half < candidates.size(); ++half)
    for (auto left = candidates[half]; left != 0;) {
      const auto lane = static_cast<unsigned>(std::countr_zero(left)) / 8;
      left &= ~(0xffULL << (lane * 8));
      if (standsAt(from + half * 8 + lane, end)) return true;
    }
  return false;
}

bool LogSearch::isIn(std::string_view text) const {
  if (wanted_.empty()) return true;
  if (text.size() <= lastAt_) return false;
  const char* const end = text.data() + text.size();
  const std::size_t places = text.size() - lastAt_;
  if (places < kLanes) {
    for (const char* at = text.data(); at != text.data() + places; ++at)
      if (standsAt(at, end)) return true;
    return false;
  }
  const char* const lastBlock = text.data() + places - kLanes;
  for (const char* from = text.data(); from < lastBlock; from += kLanes)
    if (standsAmong(from, end)) return true;
  return standsAmong(lastBlock, end);
}

}  // namespace corvane
