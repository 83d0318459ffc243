#include "core/logging/log_file_catalog.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace corvane {
namespace {

using Records = std::vector<ParsedLogRecord>;

Records inTimeOrder(Records records) {
  if (!std::ranges::is_sorted(records, {}, &ParsedLogRecord::timestamp))
    std::ranges::stable_sort(records, {}, &ParsedLogRecord::timestamp);
  return records;
}

Records merged(Records first, Records second) {
  if (first.empty()) return second;
  if (second.empty()) return first;
  Records both;
  both.reserve(first.size() + second.size());
  std::ranges::merge(first, second, std::back_inserter(both), {}, &ParsedLogRecord::timestamp,
                     &ParsedLogRecord::timestamp);
  return both;
}

struct SameRecord {
  std::size_t operator()(const ParsedLogRecord* record) const {
    return std::hash<std::string_view>()(record->message) ^ std::hash<std::string_view>()(record->level);
  }
  bool operator()(const ParsedLogRecord* a, const ParsedLogRecord* b) const { return *a == *b; }
};

// Few instants have more than one record, and then few; but a clock may tell whole seconds only.
Records withoutRepetitions(Records records) {
  auto kept = records.begin();
  for (auto run = records.begin(); run != records.end();) {
    const auto end =
        std::find_if(run + 1, records.end(), [&](const auto& one) { return one.timestamp != run->timestamp; });
    if (end - run == 1) {
      *kept++ = *run++;
      continue;
    }
    std::unordered_set<const ParsedLogRecord*, SameRecord, SameRecord> seen;
    for (; run != end; ++run) {
      if (seen.contains(&*run)) continue;
      *kept = *run;
      seen.insert(&*kept++);
    }
  }
  records.erase(kept, records.end());
  return records;
}

}  // namespace

std::vector<std::filesystem::path> LogFileCatalog::uniqueViewerPaths(const std::filesystem::path& currentWritePath,
                                                                     const std::filesystem::path& systemPath,
                                                                     const std::filesystem::path& fallbackPath) {
  std::vector<std::filesystem::path> paths;
  for (const auto& path : {systemPath, fallbackPath, currentWritePath}) {
    const auto plain = path.lexically_normal();
    if (!plain.empty() && !std::ranges::count(paths, plain)) paths.push_back(plain);
  }
  return paths;
}

LogRecords LogFileCatalog::merge(std::vector<File> files) {
  std::vector<LogRecords::Text> texts;
  Records all;
  for (auto& file : files) {
    std::ranges::copy(file.records.texts(), std::back_inserter(texts));
    all = merged(std::move(all), inTimeOrder(file.records.take()));
  }
  return {std::move(texts), withoutRepetitions(std::move(all))};
}

}  // namespace corvane
