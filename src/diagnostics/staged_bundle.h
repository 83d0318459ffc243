// The bundle before it is zipped: a folder of its own under the temporary folder, filled step by step.
#pragma once

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/json.h"
#include "base/plist.h"
#include "base/uuid.h"
#include "core/places.h"

namespace corvane {

// What goes in, as values of the moment at which the bundle was asked for.
struct DiagnosticContent {
  std::string bundleName;  // "Corvane-Diagnostic-2026-11-22-210442"
  std::string summary;
  std::optional<std::string> helperState;  // a JSON document
  std::string receipts;                    // JSON lines; empty for none
  CorvaneConstants places;                 // of the system
  std::filesystem::path home;              // of the person concerned
};

// The values of `redacted` settings give way to "<redacted>"; the list of discovered applications, which is large,
// goes.
[[nodiscard]] PlistDict redactedPreferences(PlistDict preferences);

// The same value with the keys of all its objects in the order of their bytes.
[[nodiscard]] JsonValue withSortedKeys(const JsonValue& value);

// Made by a job and used by one job at a time; only `cancel` is called from elsewhere. The folder is readable for its
// owner alone, since it gathers what other users may not read, and goes with this object at the latest.
class StagedBundle {
 public:
  // "CorvaneDiagnostic-<id>" below `temporary`; nothing is made yet.
  StagedBundle(const std::filesystem::path& temporary, Uuid id);
  ~StagedBundle();
  StagedBundle(const StagedBundle&) = delete;
  StagedBundle& operator=(const StagedBundle&) = delete;

  [[nodiscard]] const std::filesystem::path& root() const { return root_; }

  // Every step from the empty folder to the whole bundle. Sources that are missing or cannot be read leave their item
  // out; a failure to write what the bundle must have ends it. Fails when it was cancelled, too.
  [[nodiscard]] Status fill(const DiagnosticContent& content);

  // Any thread. A copy that is under way stops within a megabyte.
  void cancel() { cancelled_ = true; }

  // Deletes everything; what cannot be deleted stays.
  void remove();

 private:
  [[nodiscard]] Result<std::filesystem::path> bundleFolder() const;
  [[nodiscard]] Status write(const std::filesystem::path& name, std::string_view bytes) const;
  void copyLogs(const DiagnosticContent& content) const;
  void copyCrashReports(const DiagnosticContent& content) const;
  [[nodiscard]] Status writePreferences(const DiagnosticContent& content) const;
  void copyDeferralEvents(const DiagnosticContent& content) const;

  std::filesystem::path root_;
  bool made_ = false;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace corvane
