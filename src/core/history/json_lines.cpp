#include "core/history/json_lines.h"

#include <algorithm>
#include <string>

namespace corvane {
namespace {

// Without what is left of a line whose beginning is missing.
void dropFirstLine(std::string& text) { text.erase(0, std::min(text.find('\n'), text.size() - 1) + 1); }

void cutDown(Files& files, const std::filesystem::path& path, mode_t mode) {
  auto text = files.readEnd(path, kLineFileLimit / 2);
  if (!text || text->empty()) return;
  dropFirstLine(*text);
  std::size_t start = text->size();
  for (std::size_t kept = 0; start > 0 && kept < kKeptLines; ++kept) {
    const auto before = start < 2 ? std::string::npos : text->rfind('\n', start - 2);
    start = before == std::string::npos ? 0 : before + 1;
  }
  (void)files.replace(path, std::string_view(*text).substr(start), mode);
}

}  // namespace

Result<std::string> readNewestLines(const Files& files, const std::filesystem::path& path) {
  const bool whole = files.size(path).value_or(0) <= kReadLinesLimit;
  auto text = whole ? files.read(path) : files.readEnd(path, kReadLinesLimit);
  if (text && !whole && !text->empty()) dropFirstLine(*text);
  return text;
}

Status LineAppender::append(Files& files, const std::filesystem::path& path, std::string_view line, mode_t mode) {
  if (!files.exists(path)) {
    if (auto made = files.makeFolders(path.parent_path()); !made) return made;
    endsWhole_ = true;
  } else if (!endsWhole_) {
    const auto last = files.readEnd(path, 1);
    if (!last) return std::unexpected(last.error());
    endsWhole_ = last->empty() || last->ends_with('\n');
  }
  if (files.size(path).value_or(0) > kLineFileLimit) cutDown(files, path, mode);
  std::string bytes = endsWhole_ ? "" : "\n";
  bytes += line;
  bytes += '\n';
  auto appended = files.append(path, bytes, mode);
  endsWhole_ = appended.has_value();
  return appended;
}

}  // namespace corvane
