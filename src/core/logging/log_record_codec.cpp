#include "core/logging/log_record_codec.h"

#include <algorithm>
#include <array>
#include <optional>

namespace corvane {
namespace {

using namespace std::string_view_literals;

constexpr std::array kLevels = {"INFO"sv, "WARNING"sv, "WARN"sv, "ERROR"sv, "DEBUG"sv, "NOTICE"sv, "VERBOSE"sv};

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Where an escape begins with something else, the backslash stands for itself, as in lines of other programs.
std::string unescaped(std::string_view text) {
  std::string message;
  message.reserve(text.size());
  while (!text.empty()) {
    const auto rest = text.substr(1);
    std::size_t taken = 1;
    char letter = text.front();
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
    message += letter;
    text.remove_prefix(taken);
  }
  return message;
}

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
  return ParsedLogRecord{*timestamp, std::string(level), unescaped(message)};
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
