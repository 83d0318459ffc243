// What was read of log files: many small records over a few large texts, which they share.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/date.h"

namespace corvane {

// Its texts belong to the LogRecords that it stands in.
struct ParsedLogRecord {
  Date timestamp;
  std::string_view level;  // as it stands in the line: "INFO", "WARNING", "WARN", "ERROR", "DEBUG", "NOTICE", "VERBOSE"
  std::string_view message;
  friend bool operator==(const ParsedLogRecord&, const ParsedLogRecord&) = default;
};

// A log of hundreds of megabytes is held once: no record has a text of its own. A copy shares the texts.
class LogRecords {
 public:
  using Text = std::shared_ptr<const std::string>;
  using value_type = ParsedLogRecord;
  using const_iterator = std::vector<ParsedLogRecord>::const_iterator;

  LogRecords() = default;
  // Of literals, and of other texts that outlive it.
  LogRecords(std::initializer_list<ParsedLogRecord> records) : records_(records) {}
  LogRecords(std::vector<Text> texts, std::vector<ParsedLogRecord> records)
      : texts_(std::move(texts)), records_(std::move(records)) {}

  [[nodiscard]] bool empty() const { return records_.empty(); }
  [[nodiscard]] std::size_t size() const { return records_.size(); }
  [[nodiscard]] const ParsedLogRecord& operator[](std::size_t at) const { return records_[at]; }
  [[nodiscard]] const ParsedLogRecord& front() const { return records_.front(); }
  [[nodiscard]] const_iterator begin() const { return records_.begin(); }
  [[nodiscard]] const_iterator end() const { return records_.end(); }

  [[nodiscard]] const std::vector<Text>& texts() const { return texts_; }
  // Leaves it empty, its texts still there.
  [[nodiscard]] std::vector<ParsedLogRecord> take() { return std::exchange(records_, {}); }

 private:
  std::vector<Text> texts_;
  std::vector<ParsedLogRecord> records_;
};

}  // namespace corvane
