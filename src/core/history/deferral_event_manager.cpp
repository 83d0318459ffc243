#include "core/history/deferral_event_manager.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
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

// Whether something else than a plain file of ours, under this one name, stands there. What is ours stays ours
// between this look and the use: in a sticky folder nobody else can move it away.
bool isForeign(const std::filesystem::path& file) {
  struct stat info {};
  if (::lstat(file.c_str(), &info) != 0) return false;
  return !S_ISREG(info.st_mode) || info.st_uid != ::geteuid() || info.st_nlink != 1;
}

constexpr std::string_view kForeign = "it is a link or another user's file";

}  // namespace

DeferralEventManager::DeferralEventManager(std::filesystem::path folder, std::string_view user, Files& files,
                                           LogSink& log)
    : file_(std::move(folder) / fileNameFor(user)), files_(files), log_(log, "DeferralEventManager") {}

Status DeferralEventManager::writeEvent(const DeferralEventRecord& event) {
  const auto line = writeJson(toJson(event));
  const std::lock_guard lock(mutex_);
  if (isForeign(file_))
    return failure("CRVDeferralEvents", EPERM, fmt::format("Did not write to {}: {}", file_.string(), kForeign));
  return appender_.append(files_, file_, line, kEventsMode);
}

std::vector<DeferralEventRecord> DeferralEventManager::readEvents(const Label& label) const {
  std::vector<DeferralEventRecord> events;
  if (isForeign(file_)) {
    tellDamaged(0, kForeign);
    return events;
  }
  const auto text = readNewestLines(files_, file_);
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

// Line 0 stands for the file as a whole.
void DeferralEventManager::tellDamaged(std::size_t line, std::string_view reason) const {
  {
    const std::lock_guard lock(mutex_);
    if (!toldLines_.insert(line).second) return;
  }
  if (line == 0)
    log_.warning(fmt::format("Left out {}: {}", file_.string(), reason));
  else
    log_.warning(fmt::format("Left out line {} of {}: {}", line, file_.string(), reason));
}

}  // namespace corvane
