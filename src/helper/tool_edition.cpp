#include "helper/tool_edition.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/ascii.h"
#include "core/policies/version_comparator.h"

namespace corvane {
namespace {

constexpr std::string_view kScript = "Installomator.sh";
constexpr std::string_view kFragments = "fragments/";
constexpr std::string_view kLabels = "labels/";
constexpr std::array<std::string_view, 5> kParts = {"header.sh", "version.sh", "functions.sh", "arguments.sh",
                                                    "main.sh"};

std::unexpected<Error> unusable(std::string why) { return failure("CRVTool", 1, std::move(why)); }

bool isLabel(std::string_view path) {
  return path.starts_with(kLabels) && path.ends_with(".sh") && path.find('/', kLabels.size()) == std::string_view::npos;
}

std::string ended(std::string_view text) { return std::string(text) + (text.ends_with('\n') ? "" : "\n"); }

Result<std::string> assembled(const ArchiveFiles& fragments, std::string_view today) {
  for (const auto part : kParts)
    if (!fragments.contains(std::string(part))) return unusable(fmt::format("its fragment {} is missing", part));
  const auto version = trimmed(fragments.at("version.sh"));
  const bool plain = !version.empty() && version.find_first_of("\"$`\\\n") == std::string_view::npos;
  if (!plain) return unusable("its version is no plain text");
  std::string script =
      ended(fragments.at("header.sh")) + fmt::format("VERSION=\"{}\"\nVERSIONDATE=\"{}\"\n\n", version, today);
  script += ended(fragments.at("functions.sh")) + ended(fragments.at("arguments.sh"));
  for (const auto& [path, text] : fragments)
    if (isLabel(path)) script += ended(text);
  return script + ended(fragments.at("main.sh"));
}

}  // namespace

ToolSource ToolSource::of(const CorvaneConfiguration& config) {
  const bool custom = config.installomatorVersion == InstallomatorVersion::custom;
  return {.version = config.installomatorVersion,
          .assemble =
              config.installomatorAssembleFromFragments && config.installomatorVersion != InstallomatorVersion::release,
          .customPath = custom ? config.installomatorCustomPath : std::string()};
}

std::string ToolSource::name() const {
  auto name = std::string(rawName(version));
  if (assemble) name += " assembled";
  if (!customPath.empty()) name += " " + customPath;
  return name;
}

bool isOfEdition(std::string_view path) {
  if (path == kScript) return true;
  if (!path.starts_with(kFragments)) return false;
  path.remove_prefix(kFragments.size());
  return isLabel(path) || std::ranges::find(kParts, path) != kParts.end();
}

Result<ToolEdition> editionFrom(ArchiveFiles files, const ToolSource& source, std::string_view today) {
  ToolEdition edition;
  for (auto& [path, text] : files)
    if (path.starts_with(kFragments)) edition.fragments.emplace(path.substr(kFragments.size()), std::move(text));
  const bool scriptAlone =
      source.version == InstallomatorVersion::custom && !source.assemble && edition.fragments.empty();
  if (!scriptAlone && std::ranges::none_of(edition.fragments, [](const auto& file) { return isLabel(file.first); }))
    return unusable("it has no labels");
  if (source.assemble) {
    auto script = assembled(edition.fragments, today);
    if (!script) return std::unexpected(script.error());
    edition.script = std::move(*script);
  } else if (const auto script = files.find(std::string(kScript)); script != files.end()) {
    edition.script = std::move(script->second);
  } else {
    return unusable("it has no Installomator.sh");
  }
  return edition;
}

std::optional<std::string> objectionTo(const std::optional<ToolVersion>& candidate,
                                       const std::optional<ToolVersion>& present, bool sameSource) {
  if (!candidate) return "it states no version";
  if (!present || !sameSource) return std::nullopt;
  const auto order = VersionComparator::compare(candidate->version, present->version);
  if (order < 0 || (order == 0 && candidate->date < present->date))
    return fmt::format("{} ({}) is older than {} ({})", candidate->version, candidate->date, present->version,
                       present->date);
  return std::nullopt;
}

}  // namespace corvane
