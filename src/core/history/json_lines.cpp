#include "core/history/json_lines.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

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

Status JsonLinesFile::append(std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (!files_.exists(path_)) {
    if (auto made = files_.makeFolders(path_.parent_path()); !made) return made;
    endsWhole_ = true;
  } else if (!endsWhole_) {
    const auto last = files_.readEnd(path_, 1);
    if (!last) return std::unexpected(last.error());
    endsWhole_ = last->empty() || last->ends_with('\n');
  }
  if (files_.size(path_).value_or(0) > kLineFileLimit) cutDown(files_, path_, mode_);
  std::string bytes = endsWhole_ ? "" : "\n";
  bytes += line;
  bytes += '\n';
  auto appended = files_.append(path_, bytes, mode_);
  endsWhole_ = appended.has_value();
  return appended;
}

std::string JsonLinesFile::newestLines() const {
  const bool whole = files_.size(path_).value_or(0) <= kReadLinesLimit;
  auto text = whole ? files_.read(path_) : files_.readEnd(path_, kReadLinesLimit);
  if (!text) {
    if (files_.exists(path_)) tellUnusable(text.error().text);
    return {};
  }
  if (!whole && !text->empty()) dropFirstLine(*text);
  return std::move(*text);
}

void JsonLinesFile::tellUnusable(std::string_view reason) const {
  const std::lock_guard lock(mutex_);
  if (std::exchange(toldUnusable_, true)) return;
  log_.warning(fmt::format("Could not read {}: {}", path_.string(), reason));
}

void JsonLinesFile::tellDamaged(const DamagedLines& damaged) const {
  const std::lock_guard lock(mutex_);
  if (damaged.count <= toldDamaged_) return;
  toldDamaged_ = damaged.count;
  log_.warning(fmt::format("Left out {} damaged line(s) of {}, the first of them line {}: {}", damaged.count,
                           path_.string(), damaged.first, damaged.reason));
}

}  // namespace corvane
