#include "core/history/deferral_event_manager.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

namespace corvane {
namespace {

constexpr mode_t kEventsMode = 0644;

// A directory service may give names with a slash or a leading dot; neither makes a file of this folder.
std::string fileNameFor(std::string_view user) {
  std::string name;
  for (const char c : user) {
    const bool odd = c == '/' || c == '\0' || (c == '.' && name.empty());
    name += odd ? '_' : c;
  }
  return (name.empty() ? "_" : name) + ".jsonl";
}

}  // namespace

DeferralEventManager::DeferralEventManager(std::filesystem::path folder, std::string_view user, Files& files,
                                           LogSink& log)
    : file_(std::move(folder) / fileNameFor(user)), files_(files), log_(log, "DeferralEventManager") {}

Status DeferralEventManager::writeEvent(const DeferralEventRecord& event) {
  const auto line = writeJson(toJson(event));
  const std::lock_guard lock(mutex_);
  return appender_.append(files_, file_, line, kEventsMode);
}

std::vector<DeferralEventRecord> DeferralEventManager::readEvents(const Label& label) const {
  std::vector<DeferralEventRecord> events;
  const auto text = files_.read(file_);
  if (!text) return events;
  forEachLine(*text, [&](std::string_view line, std::size_t number) {
    const auto json = parseJson(line);
    auto event = json ? deferralEventFromJson(*json) : std::unexpected(json.error());
    if (!event)
      tellDamaged(number, event.error().text);
    else if (event->label == label)
      events.push_back(std::move(*event));
  });
  std::ranges::reverse(events);
  std::ranges::stable_sort(events, std::greater{}, &DeferralEventRecord::timestamp);
  return events;
}

void DeferralEventManager::tellDamaged(std::size_t line, std::string_view reason) const {
  {
    const std::lock_guard lock(mutex_);
    if (!toldLines_.insert(line).second) return;
  }
  log_.warning(fmt::format("Left out line {} of {}: {}", line, file_.string(), reason));
}

}  // namespace corvane
