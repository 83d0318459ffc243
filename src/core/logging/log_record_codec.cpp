#include "core/logging/log_record_codec.h"

#include <algorithm>
#include <array>
#include <optional>

namespace corvane {
namespace {

using namespace std::string_view_literals;

constexpr std::array kLevels = {"INFO"sv, "WARNING"sv, "WARN"sv, "ERROR"sv, "DEBUG"sv, "NOTICE"sv, "VERBOSE"sv};

std::optional<ParsedLogRecord> parseLine(std::string_view line) {
  const auto open = line.find(" [");
  if (open == std::string_view::npos) return std::nullopt;
  const auto close = line.find(']', open);
  if (close == std::string_view::npos) return std::nullopt;
  const auto level = line.substr(open + 2, close - open - 2);
  if (!std::ranges::count(kLevels, level)) return std::nullopt;
  const auto timestamp = parseIso8601(line.substr(0, open));
  if (!timestamp) return std::nullopt;
  auto message = line.substr(close + 1);
  if (message.starts_with(' ')) message.remove_prefix(1);
  return ParsedLogRecord{*timestamp, std::string(level), std::string(message)};
}

}  // namespace

LogRecords LogRecordCodec::parse(std::string_view contents) {
  LogRecords records;
  while (!contents.empty()) {
    const auto end = contents.find('\n');
    auto line = contents.substr(0, end);
    contents = end == std::string_view::npos ? std::string_view{} : contents.substr(end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (auto record = parseLine(line))
      records.push_back(std::move(*record));
    else if (!records.empty())
      records.back().message.append("\n").append(line);
  }
  return records;
}

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
  LogRecords all;
  for (auto& file : files) std::ranges::move(file.records, std::back_inserter(all));
  std::ranges::stable_sort(all, {}, &ParsedLogRecord::timestamp);
  return all;
}

}  // namespace corvane
