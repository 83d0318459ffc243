#include "helper/helper_state_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace corvane {
namespace {

constexpr mode_t kMode = 0644;
constexpr std::string_view kVersion = "version";
constexpr std::string_view kLastPass = "lastPassConcludedAt";
constexpr std::string_view kCutOff = "passesCutOff";
constexpr int kCutOffBeforeWait = 2;
constexpr std::array<std::string_view, 6> kOwnFields = {
    kVersion, kLastPass, kCutOff, "lastBackgroundPatchSummary", "currentRun", "lastScheduledDiscoverySummary"};

JsonObject withoutOwnFields(const JsonObject& object) {
  std::vector<JsonObject::Entry> kept;
  for (const auto& entry : object.entries())
    if (std::ranges::find(kOwnFields, entry.first) == kOwnFields.end()) kept.push_back(entry);
  return JsonObject::fromEntries(std::move(kept));
}

}  // namespace

HelperStateFile::HelperStateFile(std::filesystem::path state, std::filesystem::path apps, Files& files,
                                 const Clock& clock, LogSink& log)
    : file_(std::move(state)), apps_(std::move(apps)), files_(files), clock_(clock), log_(log, "HelperStateFile") {}

void HelperStateFile::settle() {
  read();
  const auto left = std::exchange(state_.currentRun, std::nullopt);
  if (!left) return;
  log_.warning(fmt::format("A background pass of an earlier helper did not come to its end: {} of {} label(s) done.",
                           left->completedCount, left->totalLabels));
  if (++cutOff_ >= kCutOffBeforeWait) {
    log_.warning(fmt::format("{} passes in a row were cut off; the next waits for its interval.", cutOff_));
    lastPass_ = clock_.now();
  }
  store();
}

void HelperStateFile::read() {
  const auto text = files_.read(file_);
  if (!text) {
    if (files_.exists(file_)) bad_ = text.error().text;
    return;
  }
  const auto json = parseJson(*text);
  auto state = json ? helperPatchStateFromJson(*json) : Result<HelperPatchState>(std::unexpected(json.error()));
  const auto* version = json ? json->find(kVersion) : nullptr;
  if (version && version->integer().value_or(kHelperStateVersion + 1) > kHelperStateVersion)
    bad_ = fmt::format("a later version of Corvane wrote it ({})", writeJson(*version));
  else if (!state)
    bad_ = state.error().text;
  if (bad_) return;
  state_ = std::move(*state);
  others_ = withoutOwnFields(*json->object());
  const auto* lastPass = json->find(kLastPass);
  const auto* cutOff = json->find(kCutOff);
  if (cutOff) cutOff_ = std::max<std::int64_t>(0, cutOff->integer().value_or(0));
  if (lastPass && lastPass->number()) lastPass_ = dateFromSecondsSince2001(*lastPass->number());
}

Status HelperStateFile::setAside(std::string_view reason) {
  const auto base = fmt::format("{}.set-aside-{}", file_.string(),
                                iso8601Utc(std::chrono::floor<std::chrono::seconds>(clock_.now())));
  auto target = base;
  for (int number = 2; files_.exists(target); ++number) target = fmt::format("{}-{}", base, number);
  if (auto moved = files_.rename(file_, target); !moved) return moved;
  log_.warning(fmt::format("{} was set aside as {}: {}", file_.string(),
                           std::filesystem::path(target).filename().string(), reason));
  bad_.reset();
  return {};
}

Status HelperStateFile::write() {
  if (bad_)
    if (auto aside = setAside(*bad_); !aside) return aside;
  const auto state = toJson(state_);
  JsonObject object = others_;
  object.set(std::string(kVersion), kHelperStateVersion);
  if (lastPass_) object.set(std::string(kLastPass), secondsSince2001(*lastPass_));
  if (cutOff_ > 0) object.set(std::string(kCutOff), cutOff_);
  for (const auto& [key, value] : state.object()->entries()) object.set(key, value);
  return files_.replace(file_, writeJson(object) + "\n", kMode);
}

Status HelperStateFile::store() {
  auto written = write();
  if (!written && !failing_) log_.error(fmt::format("The helper's state cannot be written: {}", written.error().text));
  failing_ = !written;
  return written;
}

void HelperStateFile::passGoesOn(HelperBackgroundCurrentRun run) {
  if (state_.currentRun == run) return;
  state_.currentRun = std::move(run);
  store();
}

void HelperStateFile::passEnded(BackgroundPatchSummary summary) {
  state_.currentRun.reset();
  lastPass_ = summary.completedAt;
  cutOff_ = 0;
  state_.lastBackgroundPatchSummary = std::move(summary);
  store();
}

void HelperStateFile::passCutOff() {
  if (std::exchange(state_.currentRun, std::nullopt)) store();
}

void HelperStateFile::passConcluded(Date when) {
  lastPass_ = when;
  cutOff_ = 0;
  store();
}

Status HelperStateFile::discoveryEnded(const ScheduledDiscoverySummary& summary, const Apps& apps) {
  if (auto written = files_.replace(apps_, writeJson(toJson(apps)) + "\n", kMode); !written) return written;
  state_.lastScheduledDiscoverySummary = summary;
  return store();
}

}  // namespace corvane
