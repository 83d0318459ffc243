#include "core/history/helper_state_stores.h"

#include <fmt/format.h>

namespace corvane {
namespace {

constexpr mode_t kStateMode = 0644;

}  // namespace

StateFile::StateFile(std::filesystem::path file, Files& files, LogSink& log, std::string_view owner)
    : file_(std::move(file)), files_(files), log_(log, owner) {}

std::optional<JsonValue> StateFile::read() const {
  const auto text = files_.read(file_);
  if (!text) {
    if (files_.exists(file_)) tellUnusable(text.error().text);
    return std::nullopt;
  }
  auto json = parseJson(*text);
  if (json) return std::move(*json);
  tellUnusable(json.error().text);
  return std::nullopt;
}

Status StateFile::write(const JsonValue& value) {
  if (auto made = files_.makeFolders(file_.parent_path()); !made) return made;
  return files_.replace(file_, writeJson(value) + "\n", kStateMode);
}

void StateFile::tellUnusable(std::string_view reason) const {
  const auto modified = files_.modified(file_);
  const auto state = fmt::format("{}/{}", modified ? secondsSince1970(*modified) : 0, files_.size(file_).value_or(0));
  {
    const std::lock_guard lock(mutex_);
    if (told_ == state) return;
    told_ = state;
  }
  log_.warning(fmt::format("{} counts as absent: {}", file_.string(), reason));
}

HelperBackgroundPatchStateStore::HelperBackgroundPatchStateStore(std::filesystem::path file, Files& files, LogSink& log)
    : file_(std::move(file), files, log, "HelperBackgroundPatchStateStore") {}

std::optional<HelperPatchState> HelperBackgroundPatchStateStore::read() const {
  const auto json = file_.read();
  if (!json) return std::nullopt;
  auto state = helperPatchStateFromJson(*json);
  if (state) return std::move(*state);
  file_.tellUnusable(state.error().text);
  return std::nullopt;
}

Status HelperBackgroundPatchStateStore::write(const HelperPatchState& state) { return file_.write(toJson(state)); }

HelperScheduledDiscoveryAppsStore::HelperScheduledDiscoveryAppsStore(std::filesystem::path file, Files& files,
                                                                     LogSink& log)
    : file_(std::move(file), files, log, "HelperScheduledDiscoveryAppsStore") {}

std::optional<Apps> HelperScheduledDiscoveryAppsStore::read() const {
  const auto json = file_.read();
  if (!json) return std::nullopt;
  auto apps = appsFromJson(*json);
  if (apps) return std::move(*apps);
  file_.tellUnusable(apps.error().text);
  return std::nullopt;
}

Status HelperScheduledDiscoveryAppsStore::write(const Apps& apps) { return file_.write(toJson(apps)); }

}  // namespace corvane
