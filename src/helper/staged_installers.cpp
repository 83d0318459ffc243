#include "helper/staged_installers.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "base/atomic_file.h"
#include "base/json.h"
#include "core/records/json_fields.h"
#include "helper/root_trust.h"

namespace corvane {
namespace {

constexpr int kRecordVersion = 1;
constexpr const char* kRecord = "staged.json";
constexpr std::string_view kPartial = ".partial";
constexpr std::size_t kRecordLimit = 64U << 10U;

bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name != kRecord &&
         name.find_first_of(std::string_view("/\0\n\r", 4)) == std::string_view::npos;
}

// Of a regular file that is ours or root's; a link is none.
std::optional<std::uint64_t> sizeOfPlainFile(const std::filesystem::path& file) {
  struct stat state {};
  if (lstat(file.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) return std::nullopt;
  if (state.st_uid != geteuid() && state.st_uid != 0) return std::nullopt;
  return static_cast<std::uint64_t>(state.st_size);
}

Status syncFile(const std::filesystem::path& file) {
  const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) return std::unexpected(fileError("opening", file, errno));
  const int result = fsync(fd);
  const int code = errno;
  close(fd);
  if (result != 0) return std::unexpected(fileError("syncing", file, code));
  return {};
}

std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> entries;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) entries.push_back(entry.path());
  return entries;
}

void removeAll(const std::filesystem::path& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace

std::string fileAddress(const std::filesystem::path& file) {
  std::string address = "file://";
  for (const unsigned char c : file.string()) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::string_view("/-._~").find(static_cast<char>(c)) != std::string_view::npos;
    address += plain ? std::string(1, static_cast<char>(c)) : fmt::format("%{:02X}", c);
  }
  return address;
}

StagedInstallers::StagedInstallers(std::filesystem::path folder, const Clock& clock, LogSink& log)
    : folder_(std::move(folder)), clock_(clock), log_(log, "Staging") {}

Status StagedInstallers::settle() {
  if (mkdir(folder_.c_str(), 0700) != 0 && errno != EEXIST) return std::unexpected(fileError("making", folder_, errno));
  if (auto trusted = checkTrustedPath(folder_, folder_.parent_path(), geteuid()); !trusted) return trusted;
  for (const auto& entry : entriesOf(folder_)) {
    const bool partial = entry.filename().string().ends_with(kPartial);
    if (!partial && read(Label(entry.filename().string()))) continue;
    log_.info(fmt::format("{} was left unfinished and is removed.", entry.filename().string()));
    removeAll(entry);
  }
  ready_ = true;
  return {};
}

std::optional<StagedInstaller> StagedInstallers::read(const Label& label) const {
  const auto place = folder_ / label.text;
  const auto text = readFile(place / kRecord, kRecordLimit);
  const auto json = text ? parseJson(*text) : Result<JsonValue>(std::unexpected(text.error()));
  if (!json) return std::nullopt;
  JsonFieldReader fields(*json, "StagedInstaller");
  const auto version = fields.integer("version");
  const auto name = fields.text("file");
  const auto staged = fields.finish(StagedInstaller{.label = fields.label("label"),
                                                    .version = fields.text("targetVersion"),
                                                    .file = place / name,
                                                    .size = static_cast<std::uint64_t>(fields.integer("size")),
                                                    .stagedAt = fields.dateSince2001("stagedAt")});
  if (!staged || version != kRecordVersion || staged->label != label || !isPlainName(name)) return std::nullopt;
  if (sizeOfPlainFile(staged->file) != staged->size) return std::nullopt;
  return *staged;
}

std::optional<StagedInstaller> StagedInstallers::find(const Label& label, const std::optional<std::string>& version) {
  if (!ready_ || !std::filesystem::exists(folder_ / label.text)) return std::nullopt;
  auto staged = read(label);
  if (staged && version && staged->version == *version) return staged;
  remove(label);
  return std::nullopt;
}

void StagedInstallers::remove(const Label& label) {
  if (ready_) removeAll(folder_ / label.text);
}

void StagedInstallers::sweep(const std::function<bool(const StagedInstaller&)>& wanted) {
  if (!ready_) return;
  for (const auto& entry : entriesOf(folder_)) {
    const auto name = entry.filename().string();
    if (name.ends_with(kPartial)) continue;
    const auto staged = read(Label(name));
    const auto age = staged ? clock_.now() - staged->stagedAt : Duration::max();
    // One from ahead of now is of a clock that was set back since.
    if (staged && age < kStagedKept && age > -kStagedKept && wanted(*staged)) continue;
    log_.info(fmt::format("The installer of {} is not needed any more and is removed.", name));
    removeAll(entry);
  }
}

Result<std::filesystem::path> StagedInstallers::makePartial(const Label& label) const {
  if (!ready_) return failure("CRVStaging", EPERM, "the staging folder cannot be used");
  const auto partial = folder_ / (label.text + std::string(kPartial));
  removeAll(partial);
  if (mkdir(partial.c_str(), 0700) != 0) return std::unexpected(fileError("making", partial, errno));
  return partial;
}

void StagedInstallers::dropPartial(const Label& label) const {
  removeAll(folder_ / (label.text + std::string(kPartial)));
}

Status StagedInstallers::keep(const std::filesystem::path& folder, const Label& label, const std::string& name,
                              const std::string& version, Date now) {
  const auto partial = folder / (label.text + std::string(kPartial));
  const auto place = folder / label.text;
  const auto size = isPlainName(name) ? sizeOfPlainFile(partial / name) : std::nullopt;
  if (!size || *size == 0) return failure("CRVStaging", ENOENT, "the tool left no installer behind");
  if (auto synced = syncFile(partial / name); !synced) return synced;
  removeAll(place);
  if (mkdir(place.c_str(), 0700) != 0) return std::unexpected(fileError("making", place, errno));
  std::error_code error;
  std::filesystem::rename(partial / name, place / name, error);
  if (error) return std::unexpected(fileError("moving", partial / name, error.value()));
  const JsonObject record{{"version", kRecordVersion},
                          {"label", label.text},
                          {"targetVersion", version},
                          {"file", name},
                          {"size", static_cast<std::size_t>(*size)},
                          {"stagedAt", secondsSince2001(now)}};
  auto written = writeFileAtomically(place / kRecord, writeJson(record) + "\n", 0600);
  removeAll(partial);
  return written;
}

}  // namespace corvane
