#include "helper/tool_place.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "base/atomic_file.h"
#include "core/discovery/folder_reader.h"

namespace corvane {
namespace {

constexpr std::size_t kFileLimit = 16U << 20U;
constexpr std::size_t kFilesLimit = 20'000;
constexpr const char* kSourceRecord = "installomator-source";

std::filesystem::path beside(const std::filesystem::path& path, const char* suffix) { return path.string() + suffix; }

void removeAll(const std::filesystem::path& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

Status moveTo(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  std::filesystem::rename(from, to, error);
  if (error) return std::unexpected(fileError("moving", from, error.value()));
  return {};
}

// Adds the wanted plain files of one folder under their names behind `prefix`.
Status take(ArchiveFiles& files, const std::filesystem::path& folder, const std::string& prefix) {
  const auto open = Descriptor::openFolder(folder);
  if (!open) return open.error() == ENOENT ? Status() : std::unexpected(fileError("reading", folder, open.error()));
  const auto entries = folderEntries(open->get());
  if (!entries) return std::unexpected(fileError("reading", folder, entries.error()));
  std::string buffer;
  for (const auto& entry : *entries) {
    const auto path = prefix + entry.name;
    if (entry.kind != EntryKind::file || !isOfEdition(path)) continue;
    const auto text = readFileAt(open->get(), entry.name.c_str(), kFileLimit, buffer);
    if (!text) return std::unexpected(fileError("reading", folder / entry.name, text.error()));
    if (files.size() == kFilesLimit) return failure("CRVTool", EFBIG, "it has too many files");
    files[path] = std::string(*text);
  }
  return {};
}

Status writeAll(const ArchiveFiles& files, const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder / "labels", error);
  if (error) return std::unexpected(fileError("making", folder, error.value()));
  for (const auto& [path, text] : files)
    if (auto written = writeFileAtomically(folder / path, text, 0644); !written) return written;
  return {};
}

}  // namespace

ToolPlace::ToolPlace(const CorvaneConstants& places)
    : script_(places.installomatorScript()), fragments_(places.fragmentsPath()) {}

std::filesystem::path ToolPlace::candidate() const { return beside(script_, ".new"); }

void ToolPlace::settle() const {
  const auto old = beside(fragments_, ".old");
  if (!std::filesystem::exists(fragments_) && std::filesystem::exists(old)) (void)moveTo(old, fragments_);
  removeAll(old);
  removeAll(beside(fragments_, ".new"));
  dropCandidate();
}

Result<ToolEdition> ToolPlace::readCustom(const std::filesystem::path& path, const ToolSource& source,
                                          std::string_view today) {
  std::error_code error;
  const bool isFolder = std::filesystem::is_directory(path, error);
  const auto folder = isFolder ? path : path.parent_path();
  ArchiveFiles files;
  if (!isFolder) {
    auto script = readFile(path, kFileLimit);
    if (!script) return std::unexpected(script.error());
    files["Installomator.sh"] = std::move(*script);
  } else if (auto taken = take(files, folder, ""); !taken) {
    return std::unexpected(taken.error());
  }
  for (const auto* part : {"fragments/", "fragments/labels/"})
    if (auto taken = take(files, folder / part, part); !taken) return std::unexpected(taken.error());
  return editionFrom(std::move(files), source, today);
}

std::optional<ToolVersion> ToolPlace::version() const {
  const auto script = readFile(script_, kFileLimit);
  return script ? toolVersion(*script) : std::nullopt;
}

std::string ToolPlace::sourceName() const {
  auto name = readFile(script_.parent_path() / kSourceRecord, 4096).value_or("");
  if (name.ends_with('\n')) name.pop_back();
  return name;
}

bool ToolPlace::holds(const ToolEdition& edition) const {
  if (readFile(script_, kFileLimit).value_or("") != edition.script) return false;
  std::size_t labels = 0;
  for (const auto& [path, text] : edition.fragments) {
    const auto present = readFile(fragments_ / path, kFileLimit);
    if (!present || *present != text) return false;
    labels += path.starts_with("labels/") ? 1 : 0;
  }
  if (edition.fragments.empty()) return true;
  std::error_code error;
  std::size_t there = 0;
  for (const auto& entry : std::filesystem::directory_iterator(fragments_ / "labels", error))
    there += entry.path().extension() == ".sh" ? 1 : 0;
  return there == labels;
}

Status ToolPlace::writeCandidate(const ToolEdition& edition) const {
  return writeFileAtomically(candidate(), edition.script, 0644);
}

void ToolPlace::dropCandidate() const { removeAll(candidate()); }

Status ToolPlace::install(const ToolEdition& edition, const std::string& sourceName) const {
  if (!edition.fragments.empty()) {
    const auto fresh = beside(fragments_, ".new");
    const auto old = beside(fragments_, ".old");
    removeAll(fresh);
    removeAll(old);
    if (auto written = writeAll(edition.fragments, fresh); !written) return written;
    if (std::filesystem::exists(fragments_))
      if (auto moved = moveTo(fragments_, old); !moved) return moved;
    if (auto moved = moveTo(fresh, fragments_); !moved) {
      (void)moveTo(old, fragments_);
      return moved;
    }
    removeAll(old);
  }
  if (chmod(candidate().c_str(), 0755) != 0) return std::unexpected(fileError("opening", candidate(), errno));
  if (auto moved = moveTo(candidate(), script_); !moved) return moved;
  return writeFileAtomically(script_.parent_path() / kSourceRecord, sourceName + "\n", 0644);
}

}  // namespace corvane
