#include "diagnostics/staged_bundle.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/atomic_file.h"
#include "core/preferences/settings_table.h"
#include "diagnostics/guarded_tree.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnersOnly = 0700;
constexpr std::size_t kPreferencesLimit = 64U << 20U;  // bytes; the application list in it grows with the Mac
constexpr std::string_view kDiscoveredAppsKey = "DiscoveredAppsData";
constexpr std::string_view kRedacted = "<redacted>";
constexpr std::string_view kReportFolder = "Library/Logs/DiagnosticReports";

constexpr std::array<std::string_view, 3> kReportPrefixes{"Corvane", "CorvaneService", "CorvaneRootHelper"};
constexpr std::array<std::string_view, 3> kReportEndings{".ips", ".crash", ".diag"};

bool isOwnCrashReport(std::string_view name) {
  return std::ranges::any_of(kReportEndings, [&](auto ending) { return name.ends_with(ending); }) &&
         std::ranges::any_of(kReportPrefixes, [&](auto prefix) { return name.starts_with(prefix); });
}

Error stagingError(std::string text) {
  return {.domain = "DiagnosticBundleService", .code = -1, .text = std::move(text)};
}

}  // namespace

PlistDict redactedPreferences(PlistDict preferences) {
  for (const auto& setting : kSettings)
    if (const auto found = preferences.find(setting.key); setting.redacted && found != preferences.end())
      found->second = PlistValue(kRedacted);
  if (const auto found = preferences.find(kDiscoveredAppsKey); found != preferences.end()) preferences.erase(found);
  return preferences;
}

JsonValue withSortedKeys(const JsonValue& value) {
  if (const auto* array = value.array()) {
    JsonArray sorted;
    sorted.reserve(array->size());
    for (const auto& item : *array) sorted.push_back(withSortedKeys(item));
    return sorted;
  }
  const auto* object = value.object();
  if (object == nullptr) return value;
  std::vector<JsonObject::Entry> entries;
  entries.reserve(object->entries().size());
  for (const auto& [key, item] : object->entries()) entries.emplace_back(key, withSortedKeys(item));
  std::ranges::sort(entries, {}, &JsonObject::Entry::first);
  return JsonObject::fromEntries(std::move(entries));
}

StagedBundle::StagedBundle(const fs::path& temporary, Uuid id)
    : root_(temporary / ("CorvaneDiagnostic-" + id.text())) {}

StagedBundle::~StagedBundle() { remove(); }

Status StagedBundle::fill(const DiagnosticContent& content) {
  // Never one that is there already: somebody else would own what we write into it.
  if (::mkdir(root_.c_str(), kOwnersOnly) != 0) return std::unexpected(fileError("making", root_, errno));
  made_ = true;
  const auto bundle = root_ / content.bundleName;
  if (::mkdir(bundle.c_str(), kOwnersOnly) != 0) return std::unexpected(fileError("making", bundle, errno));
  if (auto written = write("metadata.txt", content.summary); !written) return written;
  copyLogs(content);
  copyCrashReports(content);
  if (auto written = writePreferences(content); !written) return written;
  if (content.helperState)
    if (auto written = write("helper-state.json", *content.helperState); !written) return written;
  if (!content.receipts.empty())
    if (auto written = write("receipts.jsonl", content.receipts); !written) return written;
  copyDeferralEvents(content);
  if (cancelled_) return std::unexpected(stagingError("The diagnostic bundle was given up."));
  return {};
}

Result<fs::path> StagedBundle::bundleFolder() const {
  std::error_code error;
  for (fs::directory_iterator entry(root_, error), end; !error && entry != end; entry.increment(error))
    if (std::error_code ignored; entry->symlink_status(ignored).type() == fs::file_type::directory)
      return entry->path();
  return std::unexpected(stagingError("Staging directory has no bundle subdirectory."));
}

Status StagedBundle::write(const fs::path& name, std::string_view bytes) const {
  const auto bundle = bundleFolder();
  if (!bundle) return std::unexpected(bundle.error());
  return writeFileAtomically(*bundle / name, bytes);
}

void StagedBundle::copyLogs(const DiagnosticContent& content) const {
  const auto bundle = bundleFolder();
  if (!bundle) return;
  const auto& places = content.places;
  const auto userLogs = CorvaneConstants{.home = content.home}.userLogFile().parent_path();
  copyGuarded(GuardedPlace::of(places.root, places.logFolder()), *bundle / "logs", cancelled_);
  copyGuarded(GuardedPlace::of(places.root, places.logArchiveFolder()), *bundle / "logs-archive", cancelled_);
  copyGuarded(GuardedPlace::of(content.home, userLogs), *bundle / "logs-user", cancelled_);
}

void StagedBundle::copyCrashReports(const DiagnosticContent& content) const {
  const auto bundle = bundleFolder();
  if (!bundle) return;
  const auto target = *bundle / "crash-reports";
  // In this order, so that of two reports of one name the user's remains.
  for (const auto& base : {content.places.root, content.home})
    copyGuarded({.base = base, .relative = kReportFolder}, target, cancelled_, isOwnCrashReport);
  std::error_code stays;
  fs::remove(target, stays);  // only while it is empty
}

Status StagedBundle::writePreferences(const DiagnosticContent& content) const {
  const auto bundle = bundleFolder();
  if (!bundle) return std::unexpected(bundle.error());
  const auto folder = *bundle / "prefs";
  if (::mkdir(folder.c_str(), kOwnersOnly) != 0) return std::unexpected(fileError("making", folder, errno));
  const auto& places = content.places;
  const std::pair<GuardedPlace, const char*> files[] = {
      {GuardedPlace::of(content.home, CorvaneConstants{.home = content.home}.userPreferencesPath()), "user.plist"},
      {GuardedPlace::of(places.root, places.managedPreferencesPath()), "managed.plist"}};
  for (const auto& [source, name] : files) {
    const auto bytes = readGuarded(source, kPreferencesLimit);
    const auto document = bytes ? parsePlist(*bytes) : failure("CRVFiles", ENOENT, "");
    const auto* values = document ? document->root.dict() : nullptr;
    if (values == nullptr) continue;
    const auto redacted = writePlist(redactedPreferences(*values), PlistFormat::xml);
    if (!redacted) return std::unexpected(redacted.error());
    if (auto written = write(fs::path("prefs") / name, *redacted); !written) return written;
  }
  return {};
}

void StagedBundle::copyDeferralEvents(const DiagnosticContent& content) const {
  const auto bundle = bundleFolder();
  if (!bundle) return;
  const auto& places = content.places;
  copyGuarded(GuardedPlace::of(places.root, places.deferralEventsFolder()), *bundle / "deferral-events", cancelled_);
}

void StagedBundle::remove() {
  if (!std::exchange(made_, false)) return;
  std::error_code stays;
  fs::remove_all(root_, stays);
}

}  // namespace corvane
