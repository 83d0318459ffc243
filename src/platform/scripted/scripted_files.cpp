#include "platform/scripted/scripted_files.h"

#include <cerrno>
#include <utility>

#include "base/atomic_file.h"

namespace corvane {

void ScriptedFiles::failCall(std::size_t k, int errnoValue) {
  const std::lock_guard lock(mutex_);
  brokenCalls_[calls_ + k] = errnoValue;
}

std::size_t ScriptedFiles::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

void ScriptedFiles::failPath(const std::filesystem::path& path, int errnoValue) {
  const std::lock_guard lock(mutex_);
  if (errnoValue == 0)
    brokenPaths_.erase(path);
  else
    brokenPaths_[path] = errnoValue;
}

void ScriptedFiles::put(const std::filesystem::path& path, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  makeAll(path.parent_path());
  files_[path] = {std::string(bytes), clock_.now()};
}

std::optional<std::string> ScriptedFiles::content(const std::filesystem::path& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = files_.find(path);
  if (found == files_.end()) return std::nullopt;
  return found->second.bytes;
}

Status ScriptedFiles::count(std::string_view doing, const std::filesystem::path& path) const {
  ++calls_;
  if (const auto broken = brokenCalls_.extract(calls_)) return std::unexpected(fileError(doing, path, broken.mapped()));
  if (const auto broken = brokenPaths_.find(path); broken != brokenPaths_.end())
    return std::unexpected(fileError(doing, path, broken->second));
  return {};
}

Status ScriptedFiles::mayHold(std::string_view doing, const std::filesystem::path& path) const {
  if (folders_.contains(path)) return std::unexpected(fileError(doing, path, EISDIR));
  if (!folders_.contains(path.parent_path())) return std::unexpected(fileError(doing, path, ENOENT));
  return {};
}

void ScriptedFiles::makeAll(const std::filesystem::path& folder) {
  for (auto next = folder; folders_.insert(next).second; next = next.parent_path()) {
  }
}

Result<std::string> ScriptedFiles::read(const std::filesystem::path& path) const {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("reading", path); !counted) return std::unexpected(counted.error());
  const auto found = files_.find(path);
  if (found == files_.end())
    return std::unexpected(fileError("reading", path, folders_.contains(path) ? EISDIR : ENOENT));
  return found->second.bytes;
}

Status ScriptedFiles::replace(const std::filesystem::path& path, std::string_view bytes, mode_t) {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("writing", path); !counted) return counted;
  if (auto held = mayHold("writing", path); !held) return held;
  files_[path] = {std::string(bytes), clock_.now()};
  return {};
}

Status ScriptedFiles::append(const std::filesystem::path& path, std::string_view bytes, mode_t) {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("appending to", path); !counted) return counted;
  if (auto held = mayHold("appending to", path); !held) return held;
  auto& entry = files_[path];
  entry.bytes.append(bytes);
  entry.modified = clock_.now();
  return {};
}

Status ScriptedFiles::makeFolders(const std::filesystem::path& folder) {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("making the folder", folder); !counted) return counted;
  for (auto above = folder; above.has_relative_path(); above = above.parent_path())
    if (files_.contains(above)) return std::unexpected(fileError("making the folder", folder, ENOTDIR));
  makeAll(folder);
  return {};
}

Status ScriptedFiles::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("renaming", from); !counted) return counted;
  if (!files_.contains(from)) return std::unexpected(fileError("renaming", from, ENOENT));
  if (auto held = mayHold("renaming", to); !held) return held;
  if (from == to) return {};
  files_[to] = std::move(files_[from]);
  files_.erase(from);
  return {};
}

Status ScriptedFiles::remove(const std::filesystem::path& path) {
  const std::lock_guard lock(mutex_);
  if (auto counted = count("removing", path); !counted) return counted;
  if (files_.erase(path) == 0)
    return std::unexpected(fileError("removing", path, folders_.contains(path) ? EISDIR : ENOENT));
  return {};
}

bool ScriptedFiles::exists(const std::filesystem::path& path) const {
  const std::lock_guard lock(mutex_);
  return files_.contains(path) || folders_.contains(path);
}

std::optional<Date> ScriptedFiles::modified(const std::filesystem::path& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = files_.find(path);
  if (found == files_.end()) return std::nullopt;
  return found->second.modified;
}

std::optional<std::uint64_t> ScriptedFiles::size(const std::filesystem::path& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = files_.find(path);
  if (found == files_.end()) return std::nullopt;
  return found->second.bytes.size();
}

}  // namespace corvane
