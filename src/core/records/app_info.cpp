#include "core/records/app_info.h"

#include <algorithm>
#include <set>

#include "core/records/json_fields.h"

namespace corvane {
namespace {

constexpr std::string_view kBundleSuffix = ".app";

// A value that is there and not empty.
bool filled(const std::optional<std::string>& text) { return text && !text->empty(); }

std::string withoutBundleSuffix(std::string_view name) {
  if (name.size() > kBundleSuffix.size() && name.ends_with(kBundleSuffix)) name.remove_suffix(kBundleSuffix.size());
  return std::string(name);
}

}  // namespace

std::string joined(const Labels& labels, std::string_view separator) {
  std::string text;
  for (const auto& label : labels) {
    if (&label != &labels.front()) text += separator;
    text += label.text;
  }
  return text;
}

Labels withoutDuplicates(const Labels& labels) {
  std::set<std::string_view> seen;
  Labels kept;
  for (const auto& label : labels)
    if (seen.insert(label.text).second) kept.push_back(label);
  return kept;
}

std::string AppInfo::displayName() const {
  if (isInstalled() && filled(appName)) return withoutBundleSuffix(*appName);
  return name.empty() ? label.text : name;
}

std::optional<std::string> AppInfo::displayCurrentVersion() const {
  return filled(currentVersion) ? currentVersion : currentBundleVersion;
}

bool AppInfo::isInstalled() const { return filled(appPath) || filled(currentVersion) || filled(currentBundleVersion); }

JsonValue toJson(const AppInfo& app) {
  JsonObject object;
  object.set("label", app.label.text);
  object.set("name", app.name);
  setIfPresent(object, "appName", app.appName);
  setIfPresent(object, "packageID", app.packageID);
  setIfPresent(object, "expectedTeamID", app.expectedTeamID);
  setIfPresent(object, "bundleTeamID", app.bundleTeamID);
  object.set("teamIDMismatch", app.teamIDMismatch);
  object.set("macAppStoreManaged", app.macAppStoreManaged);
  setIfPresent(object, "currentVersion", app.currentVersion);
  setIfPresent(object, "currentBundleVersion", app.currentBundleVersion);
  setIfPresent(object, "newVersion", app.newVersion);
  object.set("updateCheckFailed", app.updateCheckFailed);
  setIfPresent(object, "updateCheckFailureReason", app.updateCheckFailureReason);
  setIfPresent(object, "appPath", app.appPath);
  object.set("targetDir", app.targetDir);
  return object;
}

Result<AppInfo> appInfoFromJson(const JsonValue& value) {
  JsonFieldReader fields(value, "AppInfo");
  AppInfo app{.label = fields.label("label"),
              .name = fields.text("name"),
              .appName = fields.optionalText("appName"),
              .packageID = fields.optionalText("packageID"),
              .expectedTeamID = fields.optionalText("expectedTeamID"),
              .bundleTeamID = fields.optionalText("bundleTeamID"),
              .teamIDMismatch = fields.flag("teamIDMismatch"),
              .macAppStoreManaged = fields.flag("macAppStoreManaged"),
              .currentVersion = fields.optionalText("currentVersion"),
              .currentBundleVersion = fields.optionalText("currentBundleVersion"),
              .newVersion = fields.optionalText("newVersion"),
              .updateCheckFailed = fields.flag("updateCheckFailed"),
              .updateCheckFailureReason = fields.optionalText("updateCheckFailureReason"),
              .appPath = fields.optionalText("appPath"),
              .targetDir = fields.text("targetDir")};
  if (app.label.empty()) fields.fail("label", "is empty");
  return fields.finish(std::move(app));
}

JsonValue toJson(const Apps& apps) {
  JsonArray list;
  for (const auto& app : apps) list.push_back(toJson(app));
  return list;
}

Result<Apps> appsFromJson(const JsonValue& value) {
  if (!value.array()) return failure("CRVRecords", 1, "the list of applications is no list");
  Apps apps;
  for (const auto& item : *value.array()) {
    auto app = appInfoFromJson(item);
    if (!app) return std::unexpected(app.error().within("application " + std::to_string(apps.size() + 1)));
    apps.push_back(std::move(*app));
  }
  return apps;
}

const AppInfo* appWith(const Apps& apps, const Label& label) {
  const auto found = std::ranges::find(apps, label, &AppInfo::label);
  return found == apps.end() ? nullptr : &*found;
}

}  // namespace corvane
