#include "diagnostics/log_entries.h"

#include <algorithm>
#include <future>
#include <thread>

namespace corvane {
namespace {

constexpr std::size_t kMostSourceCharacters = 64;

// How many entries are looked at between two looks at whether anybody still waits.
constexpr std::size_t kStretch = 1U << 14U;

// A thread costs as much as some thousand entries.
constexpr std::size_t kLeastPart = 1U << 16U;
constexpr unsigned kMostParts = 4;

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; }

}  // namespace

LogEntryLevel logEntryLevel(std::string_view recordLevel) {
  if (recordLevel == "WARNING" || recordLevel == "WARN") return LogEntryLevel::warning;
  return recordLevel == "ERROR" ? LogEntryLevel::error : LogEntryLevel::info;
}

std::optional<std::string_view> logEntrySource(std::string_view message) {
  // A character takes at most four bytes, so a long message need not be read to its end.
  const auto end = message.substr(0, 4 * kMostSourceCharacters + 2).find(": ");
  if (end == std::string_view::npos || end == 0) return std::nullopt;
  const auto source = message.substr(0, end);
  const auto characters = source.size() - static_cast<std::size_t>(std::ranges::count_if(source, isContinuation));
  const bool blank = source.find_first_of(" \t\n\r\v\f") != std::string_view::npos;
  if (blank || characters > kMostSourceCharacters) return std::nullopt;
  return source;
}

LogEntry LogEntries::operator[](std::size_t index) const {
  const auto& record = records_[index];
  return {.id = {.generation = generation_, .index = index},
          .timestamp = record.timestamp,
          .level = logEntryLevel(record.level),
          .source = logEntrySource(record.message),
          .message = record.message};
}

FilteredLogs::FilteredLogs(const FilteredLogs& within, const LogFilter& filter, const std::atomic<bool>& cancelled)
    : entries_(within.entries_) {
  const std::size_t processors = std::clamp(std::thread::hardware_concurrency(), 1U, kMostParts);
  const auto size = within.size();
  const auto parts = std::clamp<std::size_t>(size / kLeastPart, 1, processors);
  const auto part = [&](std::size_t at) {
    return within.choose(size * at / parts, size * (at + 1) / parts, filter, cancelled);
  };
  // Where no thread is to be had, the part waits for its turn on this one.
  std::vector<std::future<Chosen>> others;
  for (std::size_t at = 1; at < parts; ++at) others.push_back(std::async(part, at));
  auto chosen = part(0);
  for (auto& other : others) {
    const auto more = other.get();
    chosen.insert(chosen.end(), more.begin(), more.end());
  }
  chosen_ = std::make_shared<const Chosen>(std::move(chosen));
}

// A source is the beginning of its message, so looking through messages finds it as well.
FilteredLogs::Chosen FilteredLogs::choose(std::size_t begin, std::size_t end, const LogFilter& filter,
                                          const std::atomic<bool>& cancelled) const {
  Chosen chosen;
  const auto& records = entries_->records();
  for (; begin < end && !cancelled; begin += kStretch) {
    for (std::size_t at = begin; at < std::min(end, begin + kStretch); ++at) {
      const auto index = chosen_ ? (*chosen_)[at] : static_cast<std::uint32_t>(at);
      const auto& record = records[index];
      if (filter.level != LogEntryLevel::all && logEntryLevel(record.level) != filter.level) continue;
      if (filter.search.isIn(record.message)) chosen.push_back(index);
    }
  }
  return chosen;
}

}  // namespace corvane
