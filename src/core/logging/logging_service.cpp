#include "core/logging/logging_service.h"

#include <fmt/format.h>

#include <utility>

#include "core/logging/log_record_codec.h"

namespace corvane {
namespace {

constexpr mode_t kLogMode = 0644;

std::string_view levelText(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return "INFO";
    case LogLevel::warning:
      return "WARNING";
    case LogLevel::error:
      return "ERROR";
    case LogLevel::verbose:
      return "VERBOSE";
  }
  std::unreachable();
}

std::filesystem::path archived(const std::filesystem::path& folder, const std::filesystem::path& log, int number) {
  return folder / (log.stem().string() + "." + std::to_string(number) + log.extension().string());
}

}  // namespace

LoggingService::LoggingService(LogPaths paths, LogRole role, Files& files, const Clock& clock,
                               std::function<Calendar()> calendar)
    : paths_(std::move(paths)), role_(role), files_(files), clock_(clock), calendar_(std::move(calendar)) {}

void LoggingService::write(LogLevel level, std::string_view message) {
  if (level == LogLevel::verbose && !verbose_) return;
  const auto stamp = calendar_().iso8601(clock_.now(), true);
  const auto line = fmt::format("{} [{}] {}\n", stamp, levelText(level), LogRecordCodec::escaped(message));
  const std::lock_guard lock(mutex_);
  put(line);
}

std::filesystem::path LoggingService::logFilePath() const {
  return isUsingUserFallback() ? *paths_.fallback : paths_.system;
}

bool LoggingService::isUsingUserFallback() const {
  const std::lock_guard lock(mutex_);
  if (!probed_) put("");
  return usesFallback_;
}

// A user's log that has once fallen back stays there, so that one session's lines are found in one place.
void LoggingService::put(std::string_view line) const {
  probed_ = true;
  if (!usesFallback_) {
    if (role_ == LogRole::helper) rotateWhenFull(paths_.system, paths_.archive);
    if (appendTo(paths_.system, line) || !paths_.fallback) return;
    usesFallback_ = true;
  }
  rotateWhenFull(*paths_.fallback, paths_.fallback->parent_path());
  (void)appendTo(*paths_.fallback, line);
}

bool LoggingService::appendTo(const std::filesystem::path& path, std::string_view line) const {
  if (files_.append(path, line, kLogMode)) return true;
  if (files_.exists(path)) return false;
  // The folder of the machine's log must belong to the helper, not to the first user who logs.
  if (role_ == LogRole::user && path == paths_.system) return false;
  return files_.makeFolders(path.parent_path()) && files_.append(path, line, kLogMode);
}

// Where a step fails the log just grows on: losing its lines would be worse than its size.
void LoggingService::rotateWhenFull(const std::filesystem::path& path, const std::filesystem::path& archive) const {
  if (files_.size(path).value_or(0) < kRotationSize) return;
  if (!files_.makeFolders(archive)) return;
  for (int number = kKeptArchives - 1; number >= 1; --number) {
    const auto from = archived(archive, path, number);
    if (files_.exists(from) && !files_.rename(from, archived(archive, path, number + 1))) return;
  }
  (void)files_.rename(path, archived(archive, path, 1));
}

}  // namespace corvane
