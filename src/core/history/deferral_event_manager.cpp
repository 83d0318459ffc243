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

DeferralEventManager::DeferralEventManager(const std::filesystem::path& folder, std::string_view user, Files& files,
                                           LogSink& log)
    : file_(folder / fileNameFor(user), kEventsMode, files, Logger(log, "DeferralEventManager")) {}

Status DeferralEventManager::writeEvent(const DeferralEventRecord& event) {
  if (isForeign(file()))
    return failure("CRVDeferralEvents", EPERM, fmt::format("Did not write to {}: {}", file().string(), kForeign));
  return file_.append(writeJson(toJson(event)));
}

std::vector<DeferralEventRecord> DeferralEventManager::readEvents(const Label& label) const {
  std::vector<DeferralEventRecord> events;
  if (isForeign(file())) {
    file_.tellUnusable(kForeign);
    return events;
  }
  DamagedLines damaged;
  const auto text = file_.newestLines();
  forEachLine(text, [&](std::string_view line, std::size_t number) {
    const auto json = parseJson(line);
    auto event = json ? deferralEventFromJson(*json) : std::unexpected(json.error());
    if (!event)
      damaged.add(number, event.error().text);
    else if (event->label == label)
      events.push_back(std::move(*event));
  });
  file_.tellDamaged(damaged);
  std::ranges::reverse(events);
  std::ranges::stable_sort(events, std::greater{}, &DeferralEventRecord::timestamp);
  return events;
}

}  // namespace corvane
