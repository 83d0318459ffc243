// One application that a label can manage, installed or not.
#pragma once

#include <compare>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/json.h"

namespace corvane {

// The name of an Installomator label: the identity of an application everywhere. A type of its own, so
// that it is never taken for a display name.
struct Label {
  std::string text;

  Label() = default;
  explicit Label(std::string name) : text(std::move(name)) {}
  [[nodiscard]] bool empty() const { return text.empty(); }
  friend auto operator<=>(const Label&, const Label&) = default;
};

using Labels = std::vector<Label>;
using LabelSet = std::set<Label>;

// "a, b, c", as log lines and messages join labels.
[[nodiscard]] std::string joined(const Labels& labels, std::string_view separator = ", ");

// The labels without later repetitions, in their order.
[[nodiscard]] Labels withoutDuplicates(const Labels& labels);

// A value; a merged check result is a new AppInfo with all fields passed through.
struct AppInfo {
  Label label;
  std::string name;                      // the label's `name`
  std::optional<std::string> appName;    // bundle name as installed, "Quill.app"
  std::optional<std::string> packageID;  // installer package identifier of the label
  std::optional<std::string> expectedTeamID;
  std::optional<std::string> bundleTeamID;
  bool teamIDMismatch = false;
  bool macAppStoreManaged = false;
  std::optional<std::string> currentVersion;        // installed short version
  std::optional<std::string> currentBundleVersion;  // installed build version
  std::optional<std::string> newVersion;            // absent until a check has found one
  bool updateCheckFailed = false;
  std::optional<std::string> updateCheckFailureReason;
  std::optional<std::string> appPath;  // absolute path of the installed bundle
  std::string targetDir;

  // The name shown everywhere: the bundle's name without ".app" when installed, else the label's name,
  // else the label.
  [[nodiscard]] std::string displayName() const;
  [[nodiscard]] std::optional<std::string> displayCurrentVersion() const;
  [[nodiscard]] std::optional<std::string> displayNewVersion() const { return newVersion; }
  // A bundle path or an installed version (package receipts have no bundle) is known.
  [[nodiscard]] bool isInstalled() const;

  friend bool operator==(const AppInfo&, const AppInfo&) = default;
};

using Apps = std::vector<AppInfo>;

// The first one of that label; null where there is none. Points into `apps`.
[[nodiscard]] const AppInfo* appWith(const Apps& apps, const Label& label);

// The form of stored lists, of helper answers and of helper-discovered-apps.json: an object with the field
// names above, absent fields left out. Reading fails with a text that names the record and field.
[[nodiscard]] JsonValue toJson(const AppInfo& app);
[[nodiscard]] Result<AppInfo> appInfoFromJson(const JsonValue& value);
[[nodiscard]] JsonValue toJson(const Apps& apps);
[[nodiscard]] Result<Apps> appsFromJson(const JsonValue& value);

}  // namespace corvane

template <>
struct std::hash<corvane::Label> {
  std::size_t operator()(const corvane::Label& label) const noexcept { return std::hash<std::string>()(label.text); }
};
