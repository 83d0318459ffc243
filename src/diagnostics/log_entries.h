// What the log viewer lists: entries read off the records, and the choice of them that a filter leaves.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "core/logging/log_records.h"
#include "core/records/enumerations.h"
#include "diagnostics/log_search.h"

namespace corvane {

// `all` is a filter's value only; no entry has it.
enum class LogEntryLevel { all, info, warning, error };

template <>
struct CaseNames<LogEntryLevel> {
  static constexpr auto all =
      std::to_array<CaseName<LogEntryLevel>>({{LogEntryLevel::all, "all", toLocalize("All")},
                                              {LogEntryLevel::info, "info", toLocalize("Info")},
                                              {LogEntryLevel::warning, "warning", toLocalize("Warnings")},
                                              {LogEntryLevel::error, "error", toLocalize("Errors")}});
};

// Which entry of which load; an entry of a later load never has the same.
struct LogEntryId {
  std::uint64_t generation = 0;
  std::uint64_t index = 0;
  friend bool operator==(const LogEntryId&, const LogEntryId&) = default;
};

// Its texts belong to the LogEntries that it was read off.
struct LogEntry {
  LogEntryId id;
  Date timestamp;
  LogEntryLevel level = LogEntryLevel::info;
  std::optional<std::string_view> source;
  std::string_view message;  // whole, with the source in it
};

// By the exact text: INFO, WARNING, WARN, ERROR; every other is `info`.
[[nodiscard]] LogEntryLevel logEntryLevel(std::string_view recordLevel);

// What stands before the first ": ", when it is not empty, has no blank and at most 64 characters.
[[nodiscard]] std::optional<std::string_view> logEntrySource(std::string_view message);

// Never changes; any thread. Entries are made when asked for: of millions, few are ever looked at.
class LogEntries {
 public:
  LogEntries() = default;
  LogEntries(std::uint64_t generation, LogRecords records) : generation_(generation), records_(std::move(records)) {}

  [[nodiscard]] bool empty() const { return records_.empty(); }
  [[nodiscard]] std::size_t size() const { return records_.size(); }
  [[nodiscard]] LogEntry operator[](std::size_t index) const;
  [[nodiscard]] const LogRecords& records() const { return records_; }

 private:
  std::uint64_t generation_ = 0;
  LogRecords records_;
};
using SharedLogEntries = std::shared_ptr<const LogEntries>;

struct LogFilter {
  LogEntryLevel level = LogEntryLevel::all;
  LogSearch search;

  [[nodiscard]] bool passesAll() const { return level == LogEntryLevel::all && search.isEmpty(); }
  // Whatever passes this one passes `wider` too.
  [[nodiscard]] bool narrows(const LogFilter& wider) const {
    return (wider.level == LogEntryLevel::all || wider.level == level) && search.narrows(wider.search);
  }
  friend bool operator==(const LogFilter&, const LogFilter&) = default;
};

// The entries that passed a filter, in their order. Never changes; any thread.
class FilteredLogs {
 public:
  FilteredLogs() = default;
  // All of them.
  explicit FilteredLogs(SharedLogEntries entries) : entries_(std::move(entries)) {}
  // Looks through `within`, whose own filter this one narrows, on all processors when it is much. Stops, with part of
  // the answer, once `cancelled`.
  FilteredLogs(const FilteredLogs& within, const LogFilter& filter, const std::atomic<bool>& cancelled);

  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] std::size_t size() const { return chosen_ ? chosen_->size() : entries_->size(); }
  [[nodiscard]] LogEntry operator[](std::size_t at) const { return (*entries_)[chosen_ ? (*chosen_)[at] : at]; }
  [[nodiscard]] const SharedLogEntries& entries() const { return entries_; }
  // The very same answer; an equal one of another filter is not.
  [[nodiscard]] bool isSameAs(const FilteredLogs& other) const {
    return entries_ == other.entries_ && chosen_ == other.chosen_;
  }

 private:
  using Chosen = std::vector<std::uint32_t>;
  [[nodiscard]] Chosen choose(std::size_t begin, std::size_t end, const LogFilter& filter,
                              const std::atomic<bool>& cancelled) const;

  SharedLogEntries entries_ = std::make_shared<const LogEntries>();
  std::shared_ptr<const Chosen> chosen_;  // null for all
};

}  // namespace corvane
