#include "ctl/validate_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "base/atomic_file.h"
#include "base/json.h"
#include "core/discovery/label_catalog.h"
#include "core/discovery/label_patterns.h"
#include "core/preferences/configuration_profile.h"
#include "core/preferences/nearest_name.h"
#include "core/preferences/settings_validation.h"
#include "ctl/signed_profile.h"

namespace corvane::ctl {
namespace {

// Far above any profile; what is larger is another file.
constexpr std::size_t kMostBytes = 16 * 1024 * 1024;

struct Checked {
  bool isSigned = false;
  ProfileSettings from;
  SettingFindings findings;
};

FitsALabel catalogueOf(const World& world) {
  auto catalog = LabelCatalog::read(world.services.places.labelsFolder(), Logger(world.services.log, "corvanectl"));
  if (!catalog || catalog->empty()) return nullptr;
  return [labels = std::make_shared<const Labels>(catalog->labels())](std::string_view pattern) {
    return std::ranges::any_of(*labels, [&](const Label& label) { return matchesLabelPattern(pattern, label.text); });
  };
}

Result<Checked> check(const std::string& file, const World& world) {
  auto bytes = readFile(file, kMostBytes);
  if (!bytes) return std::unexpected(bytes.error());
  Checked checked{.isSigned = looksWrapped(*bytes)};
  if (checked.isSigned) {
    bytes = unwrapped(*bytes);
    if (!bytes) return std::unexpected(bytes.error());
  }
  const auto list = parsePlist(*bytes);
  if (!list) return std::unexpected(list.error().within("The file is no property list"));
  auto settings = profileSettings(list->root);
  if (!settings) return std::unexpected(settings.error());
  checked.from = std::move(*settings);
  checked.findings = checked.from.findings;
  for (auto& finding : validateSettings(checked.from.settings, catalogueOf(world)))
    checked.findings.push_back(std::move(finding));
  std::ranges::stable_sort(checked.findings, {}, &SettingFinding::severity);
  return checked;
}

std::string_view wordFor(SettingFinding::Severity severity) {
  return severity == SettingFinding::Severity::error ? "error" : "warning";
}

std::string counted(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string_view formOf(const Checked& checked) {
  if (checked.isSigned) return "signed profile";
  return checked.from.profile ? "profile" : "property list";
}

JsonValue json(const Checked& checked, const std::string& file, std::size_t errors) {
  JsonArray findings;
  for (const auto& finding : checked.findings)
    findings.push_back(JsonObject{{"severity", wordFor(finding.severity)},
                                  {"key", finding.key},
                                  {"reason", finding.reason},
                                  {"fix", finding.fix}});
  return JsonObject{{"file", file},
                    {"form", formOf(checked)},
                    {"settings", checked.from.settings.size()},
                    {"errors", errors},
                    {"warnings", checked.findings.size() - errors},
                    {"findings", std::move(findings)}};
}

std::string text(const Checked& checked, std::size_t errors) {
  std::string lines;
  for (const auto& finding : checked.findings)
    lines +=
        fmt::format("{}: {}: {}\n  {}\n", wordFor(finding.severity), shown(finding.key), finding.reason, finding.fix);
  const auto settings = counted(checked.from.settings.size(), "setting");
  if (checked.findings.empty())
    return fmt::format("Nothing to find fault with: {} in a {}.\n", settings, formOf(checked));
  return lines + fmt::format("\n{} and {} in a {} with {}.\n", counted(errors, "error"),
                             counted(checked.findings.size() - errors, "warning"), formOf(checked), settings);
}

}  // namespace

ExitCode runValidate(const Command& command, const World& world) {
  const auto checked = check(command.file, world);
  if (!checked) return tellError(checked.error(), command.json, ExitCode::failed, world);
  const auto errors = static_cast<std::size_t>(
      std::ranges::count(checked->findings, SettingFinding::Severity::error, &SettingFinding::severity));
  world.out(command.json ? writeJson(json(*checked, command.file, errors)) + "\n" : text(*checked, errors));
  return errors == 0 ? ExitCode::done : ExitCode::failed;
}

}  // namespace corvane::ctl
