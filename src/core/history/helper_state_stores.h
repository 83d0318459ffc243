// What the helper leaves behind for the application: its state, and the inventory of a scheduled discovery.
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "base/error.h"
#include "core/logging/logging_service.h"
#include "core/records/app_info.h"
#include "core/records/helper_records.h"
#include "platform/files.h"

namespace corvane {

// One JSON document in one file. A missing file is absent; so is an unreadable or damaged one, which is told
// to the log once while it stays the same. Any thread.
class StateFile {
 public:
  StateFile(std::filesystem::path file, Files& files, LogSink& log, std::string_view owner);

  [[nodiscard]] std::optional<JsonValue> read() const;
  // Replaces the whole file atomically.
  [[nodiscard]] Status write(const JsonValue& value);
  // The document was no record of its kind; told like a damaged file.
  void tellUnusable(std::string_view reason) const;

 private:
  std::filesystem::path file_;
  Files& files_;
  Logger log_;
  mutable std::mutex mutex_;
  mutable std::optional<std::string> told_;  // the state of the file that was told of
};

// helper-state.json. The helper is its only writer.
class HelperBackgroundPatchStateStore {
 public:
  HelperBackgroundPatchStateStore(std::filesystem::path file, Files& files, LogSink& log);
  [[nodiscard]] std::optional<HelperPatchState> read() const;
  [[nodiscard]] Status write(const HelperPatchState& state);

 private:
  StateFile file_;
};

// helper-discovered-apps.json. The helper is its only writer.
class HelperScheduledDiscoveryAppsStore {
 public:
  HelperScheduledDiscoveryAppsStore(std::filesystem::path file, Files& files, LogSink& log);
  [[nodiscard]] std::optional<Apps> read() const;
  [[nodiscard]] Status write(const Apps& apps);

 private:
  StateFile file_;
};

}  // namespace corvane
