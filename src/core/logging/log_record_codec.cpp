#include "core/logging/log_record_codec.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace corvane {
namespace {

using namespace std::string_view_literals;

constexpr std::array kLevels = {"INFO"sv, "WARNING"sv, "WARN"sv, "ERROR"sv, "DEBUG"sv, "NOTICE"sv, "VERBOSE"sv};

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Writes `text` to where it stands as it was before it was escaped, and gives its new end. Where an escape begins with
// something else, the backslash stands for itself, as in lines of other programs.
char* unescapeInPlace(char* begin, const char* end) {
  char* to = begin;
  for (const char* from = begin; from != end;) {
    const std::string_view rest(from + 1, static_cast<std::size_t>(end - from - 1));
    std::size_t taken = 1;
    char letter = *from;
    if (letter == '\\' && !rest.empty()) {
      taken = 2;
      if (rest.front() == 'n') {
        letter = '\n';
      } else if (rest.front() == 'r') {
        letter = '\r';
      } else if (rest.front() == 't') {
        letter = '\t';
      } else if (rest.front() == 'x' && rest.size() >= 3 && kHexDigits.find(rest[1]) < 16 &&
                 kHexDigits.find(rest[2]) < 16) {
        letter = static_cast<char>(kHexDigits.find(rest[1]) * 16 + kHexDigits.find(rest[2]));
        taken = 4;
      } else if (rest.front() != '\\') {
        taken = 1;
      }
    }
    *to++ = letter;
    from += taken;
  }
  return to;
}

std::optional<std::string_view> levelBefore(std::string_view bracket) {
  for (const auto level : kLevels)
    if (bracket.size() > level.size() && bracket[level.size()] == ']' && bracket.starts_with(level)) return level;
  return std::nullopt;
}

struct Head {
  Date timestamp;
  std::string_view level;
  std::size_t size = 0;  // with the blank behind it; 0 for a line that begins no record
};

// Reads the heads of lines. Neighbours share their minute and offset, so these are read once for all of them.
class HeadReader {
 public:
  Head read(std::string_view line) {
    if (line.empty() || line.front() < '0' || line.front() > '9') return {};
    const bool known = line.size() > kForm.size() && line.starts_with(minute()) &&
                       line.substr(kOffset, kOffsetSize) == offset() && isForm(line);
    return known ? fromKnown(line) : fromAnew(line);
  }

 private:
  // What our own log writes.
  static constexpr std::string_view kForm = "2026-11-22T22:04:42.123+01:00 [";
  static constexpr std::size_t kSeconds = 17;
  static constexpr std::size_t kFraction = 20;
  static constexpr std::size_t kOffset = 23;
  static constexpr std::size_t kOffsetSize = 6;

  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
  static bool isForm(std::string_view line) {
    return isDigit(line[kSeconds]) && isDigit(line[kSeconds + 1]) && line[kFraction - 1] == '.' &&
           isDigit(line[kFraction]) && isDigit(line[kFraction + 1]) && isDigit(line[kFraction + 2]) &&
           line[kForm.size() - 2] == ' ' && line[kForm.size() - 1] == '[';
  }
  static int number(std::string_view digits) {
    int value = 0;
    for (const char digit : digits) value = value * 10 + (digit - '0');
    return value;
  }
  static Duration sinceMinute(std::string_view line) {
    return std::chrono::seconds(number(line.substr(kSeconds, 2))) +
           std::chrono::milliseconds(number(line.substr(kFraction, 3)));
  }
  [[nodiscard]] std::string_view minute() const { return std::string_view(known_).substr(0, kSeconds); }
  [[nodiscard]] std::string_view offset() const { return std::string_view(known_).substr(kSeconds); }

  [[nodiscard]] Head fromKnown(std::string_view line) const {
    const auto since = sinceMinute(line);
    if (since >= 61s) return {};
    return headWith(minuteBegin_ + since, line, kForm.size());
  }

  Head fromAnew(std::string_view line) {
    const auto open = line.find(" [");
    if (open == std::string_view::npos) return {};
    const auto timestamp = parseIso8601(line.substr(0, open));
    if (!timestamp) return {};
    if (open + 2 == kForm.size() && line.size() > kForm.size() && isForm(line)) {
      known_.assign(line.substr(0, kSeconds)).append(line.substr(kOffset, kOffsetSize));
      minuteBegin_ = *timestamp - sinceMinute(line);
    }
    return headWith(*timestamp, line, open + 2);
  }

  static Head headWith(Date timestamp, std::string_view line, std::size_t bracket) {
    const auto level = levelBefore(line.substr(bracket));
    if (!level) return {};
    const auto end = bracket + level->size() + 1;
    return {timestamp, *level, line.size() > end && line[end] == ' ' ? end + 1 : end};
  }

  // The minute and the offset of the line that was last read anew. None at first: no line begins like this.
  std::string known_ = std::string(kSeconds + kOffsetSize, '?');
  Date minuteBegin_;
};

// The first `sign` in [from, end), or the end.
char* find(char* from, char* end, char sign) {
  if (from == end) return end;
  auto* found = static_cast<char*>(std::memchr(from, sign, static_cast<std::size_t>(end - from)));
  return found == nullptr ? end : found;
}

// Where a text has any. It looks ahead a stretch at a time, since most have few: as far as the nearest cache holds.
class Backslashes {
 public:
  Backslashes(char* begin, char* end) : next_(begin), seenUntil_(begin), end_(end) {}

  // Asked for one line after the other.
  bool anyIn(char* begin, const char* end) {
    if (next_ < begin) next_ = find(begin, std::max(seenUntil_, begin), '\\');
    while (next_ >= seenUntil_ && seenUntil_ < end) {
      char* const from = std::max(seenUntil_, begin);
      seenUntil_ = from + std::min(kStretch, end_ - from);
      next_ = find(from, seenUntil_, '\\');
    }
    return next_ < end;
  }

 private:
  static constexpr std::ptrdiff_t kStretch = 16 << 10;

  char* next_;  // none is between what was asked for last and this
  char* seenUntil_;
  char* end_;
};

// How many records a text will have, judged by its first lines. Too many cost nothing, too few a copy.
std::size_t likelyCount(std::string_view text) {
  constexpr std::size_t kSample = 64U << 10U;
  const auto lines = std::ranges::count(text.substr(0, kSample), '\n');
  return static_cast<std::size_t>(lines + 1) * (text.size() / std::min(std::max(text.size(), 1UL), kSample) + 1);
}

}  // namespace

std::string LogRecordCodec::escaped(std::string_view message) {
  std::string text;
  text.reserve(message.size());
  for (const char c : message) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n')
      text += "\\n";
    else if (c == '\r')
      text += "\\r";
    else if (c == '\t')
      text += "\\t";
    else if (c == '\\')
      text += "\\\\";
    else if (byte < 0x20 || byte == 0x7f)
      text.append("\\x").append({kHexDigits[byte / 16], kHexDigits[byte % 16]});
    else
      text += c;
  }
  return text;
}

LogRecords LogRecordCodec::parse(std::string contents) {
  auto text = std::make_shared<std::string>(std::move(contents));
  std::vector<ParsedLogRecord> records;
  records.reserve(likelyCount(*text));
  HeadReader heads;
  char* const textEnd = text->data() + text->size();
  Backslashes backslashes(text->data(), textEnd);
  char* messageEnd = nullptr;  // of the record before
  for (char* begin = text->data(); begin != textEnd;) {
    char* const lineBreak = find(begin, textEnd, '\n');
    char* end = lineBreak;
    if (end != begin && end[-1] == '\r') --end;
    const auto head = heads.read({begin, end});
    if (head.size != 0) {
      char* const message = begin + head.size;
      messageEnd = backslashes.anyIn(message, end) ? unescapeInPlace(message, end) : end;
      records.push_back({head.timestamp, head.level, {message, messageEnd}});
    } else if (messageEnd != nullptr) {
      *messageEnd++ = '\n';
      if (messageEnd != begin) std::memmove(messageEnd, begin, static_cast<std::size_t>(end - begin));
      messageEnd += end - begin;
      records.back().message = {records.back().message.data(), messageEnd};
    }
    begin = lineBreak == textEnd ? textEnd : lineBreak + 1;
  }
  return {{std::move(text)}, std::move(records)};
}

}  // namespace corvane
