// The installers that lie ready in the staging folder. Downloads none and installs none.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "core/logging/logging_service.h"
#include "core/records/app_info.h"
#include "platform/clock.h"

namespace corvane {

// What nobody installed in that time is not going to be.
inline constexpr Duration kStagedKept = 14 * 24h;

struct StagedInstaller {
  Label label;
  std::string version;         // that the label offered when it was downloaded
  std::filesystem::path file;  // the archive, as the tool named it
  std::uint64_t size = 0;
  Date stagedAt{};
  friend bool operator==(const StagedInstaller&, const StagedInstaller&) = default;
};

// The address that makes the tool take the file in place of a download.
[[nodiscard]] std::string fileAddress(const std::filesystem::path& file);

// A folder a label: the archive, and beside it a record that is written last, so that an archive without one was never
// whole. Work goes on in "<label>.partial" folders, which are nobody's after a start. The folder belongs to the helper
// alone; what is in it and cannot be trusted (no plain file, another size, another label) is removed like what is old.
// Main thread, but `keep`.
class StagedInstallers {
 public:
  StagedInstallers(std::filesystem::path folder, const Clock& clock, LogSink& log);

  // Makes the folder where it is missing, and for root checks that it is root's alone; removes what was left half done.
  // Nothing is staged or found until this succeeded.
  [[nodiscard]] Status settle();

  // The installer of exactly this version; any other of the label is removed.
  [[nodiscard]] std::optional<StagedInstaller> find(const Label& label, const std::optional<std::string>& version);
  void remove(const Label& label);
  // Removes what is too old, and all that `wanted` does not want any more.
  void sweep(const std::function<bool(const StagedInstaller&)>& wanted);

  // A fresh work folder for the label. Fails with what the system says.
  [[nodiscard]] Result<std::filesystem::path> makePartial(const Label& label) const;
  void dropPartial(const Label& label) const;

  // Puts `name`, which lies in the label's work folder, in its place: synced first, its record last. Any thread.
  [[nodiscard]] static Status keep(const std::filesystem::path& folder, const Label& label, const std::string& name,
                                   const std::string& version, Date now);

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

 private:
  [[nodiscard]] std::optional<StagedInstaller> read(const Label& label) const;

  std::filesystem::path folder_;
  const Clock& clock_;
  Logger log_;
  bool ready_ = false;
};

}  // namespace corvane
