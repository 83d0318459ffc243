#include "sample/sample_mac.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <system_error>

#include "base/plist.h"
#include "sample/bundle_writer.h"
#include "sample/catalogue.h"
#include "sample/files.h"
#include "sample/label_writer.h"
#include "sample/scripts.h"
#include "sample/vendor_writer.h"

namespace corvane::sample {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kDomainFile = "org.corvane.Corvane.plist";

struct Layout {
  fs::path root;
  fs::path home = root / "Users" / kUserName;
  fs::path support = root / "Library/Application Support/Corvane";
  fs::path fragments = support / "fragments";
  fs::path labels = fragments / "labels";
  fs::path control = support / "sample";
  fs::path vendors = root / "vendor";
};

void clearOldSample(const fs::path& folder) {
  if (!fs::exists(folder) || fs::is_empty(folder)) return;
  if (!fs::exists(folder / kMarker))
    throw MakingFailed(fmt::format("{} is not empty and no sample; choose another folder", folder.string()));
  std::error_code error;
  fs::remove_all(folder, error);
  if (error) throw MakingFailed(fmt::format("Removing {}: {}", folder.string(), error.message()));
}

// For all users, as the tool's question for a version runs as one without rights.
void putSharedFolder(const fs::path& folder) {
  constexpr mode_t everybody = 01777;
  makeFolder(folder);
  if (::chmod(folder.c_str(), everybody) != 0) throw MakingFailed("Opening to all users: " + folder.string());
}

void makeFolders(const Layout& at) {
  makeFolder(at.root);
  for (const auto* folder :
       {"Applications/Utilities", "Library/LaunchAgents", "Library/LaunchDaemons", "Library/Logs/Corvane",
        "Library/Managed Preferences", "var/run/corvane", "var/db/receipts", "var/log", "usr/bin", "usr/local/bin"})
    makeFolder(at.root / folder);
  for (const auto* folder : {"Library/Preferences", "Library/Logs/Corvane", "Library/Application Support/Corvane",
                             "Library/LaunchAgents", "Applications"})
    makeFolder(at.home / folder);
  makeFolder(at.root / "var/run/user", 0700);
  putSharedFolder(at.root / "tmp");
  makeFolder(at.home / "Desktop");
  for (const auto* folder : {"fail", "delay", "garbage", "answer", "bin"}) makeFolder(at.control / folder);
  makeFolder(at.labels);
  makeFolder(at.vendors);
}

std::string quoted(const fs::path& path) { return "'" + replaced(path.string(), "'", "'\\''") + "'"; }

void putInstaller(const Layout& at, const SampleSpec& spec, const std::string& vendors) {
  put(at.support / "Installomator.sh", replaced(std::string(installerTool()), "SAMPLE_ROOT", quoted(at.root)), 0755);
  put(at.fragments / "install.sh", installerInstall());
  put(at.fragments / "blocking.sh", installerBlocking());
  const auto functions = replaced(std::string(installerFunctions()), "VENDORS_ADDRESS", vendors);
  put(at.fragments / "functions.sh", replaced(functions, "SAMPLE_ROOT", quoted(at.root)));
  put(at.fragments / "version.sh", "10.9sample\n");
  put(at.control / "bin/sample_tool", take(spec.programs / "sample_tool"), 0755);
  // The prompt is a process of this name, which is how an open prompt is known.
  put(at.root / "usr/bin/osascript", take(spec.programs / "sample_prompt"), 0755);
  put(at.root / "System/Library/CoreServices/SystemVersion.plist",
      writePlist(PlistDict{{"ProductName", "macOS"}, {"ProductVersion", "26.1"}}, PlistFormat::xml).value());
}

void putReceipt(const Layout& at, std::string_view package, std::string_view version, std::string_view prefix) {
  using namespace std::chrono_literals;
  const PlistDict receipt{{"PackageIdentifier", package},
                          {"PackageVersion", version},
                          {"InstallPrefixPath", prefix},
                          {"InstallProcessName", "installer"},
                          {"InstallDate", Date(std::chrono::sys_days(std::chrono::year(2026) / 9 / 14))}};
  put(at.root / "var/db/receipts" / fmt::format("{}.plist", package), writePlist(receipt, PlistFormat::binary).value());
}

PlistArray texts(std::initializer_list<const char*> items) {
  PlistArray array;
  for (const auto* item : items) array.emplace_back(item);
  return array;
}

void putPreferences(const Layout& at) {
  put(at.home / "Library/Preferences" / kDomainFile, writePlist(userSettings(), PlistFormat::binary).value());
  put(at.root / "Library/Managed Preferences" / kDomainFile, writePlist(managedSettings(), PlistFormat::xml).value());
}

void putApplications(const Layout& at, const std::string& program) {
  for (const auto& app : installedApplications()) {
    const auto folder = app.folder.starts_with("~/") ? at.home / app.folder.substr(2) : at.root / app.folder;
    putBundle(folder, bundleFiles(bundleOf(app), program));
  }
  putReceipt(at, "org.ember.console.pkg", "5.0", "Applications");
  putReceipt(at, "org.ternworks.tern", "0.11.3", "usr/local");
  put(at.root / "usr/local/bin/terncli", "#!/bin/sh\necho 0.11.3\n", 0755);
  // A bundle without anything in it, as an interrupted copy leaves one.
  makeFolder(at.root / "Applications/Zinnia Editor.app");
}

void putLabels(const Layout& at, const std::string& vendors, const std::string& program) {
  for (const auto& label : labelCatalogue()) {
    put(at.labels / (fragmentFileName(label) + ".sh"), labelFragment(label, vendors));
    putVendor(at.vendors, label, program);
    if (!label.updateTool.empty()) put(at.root / label.updateTool.substr(1), updateToolScript(label), 0755);
  }
  put(at.labels / "zzdamaged.sh", "name=\"Zinnia Editor\"\nif [[ then (\n");
  put(at.control / "fail/rookeryserver", "9\n");
}

void putEnvironment(const Layout& at, const SampleSpec& spec, const std::string& vendors) {
  auto text = fmt::format("# Source this to work on the sample Mac: . {}\n", quoted(at.root / "env"));
  text += fmt::format("export CORVANE_ROOT={}\nexport HOME={}\n", quoted(at.root), quoted(at.home));
  text += fmt::format("export CORVANE_SAMPLE_VENDORS={}\nexport no_proxy=127.0.0.1,localhost\n", vendors);
  text +=
      fmt::format("[ -n \"${{XDG_RUNTIME_DIR:-}}\" ] || export XDG_RUNTIME_DIR={}\n", quoted(at.root / "var/run/user"));
  if (spec.bundle) text += fmt::format("export CORVANE_BUNDLE={}\n", quoted(fs::absolute(*spec.bundle)));
  put(at.root / "env", text);
}

}  // namespace

PlistDict userSettings() {
  return {{"RequiredLabels", texts({"heronvpn", "alderagent"})},
          {"IgnoredLabels", texts({"basalt*"})},
          {"OptionalLabels", texts({"basaltreports"})},
          {"VersionComparisonInstallomatorFallback", true}};
}

PlistDict managedSettings() {
  return {{"SupportTeamName", "Sample Service Desk"},
          {"SupportTeamPhone", "+1 555 0100"},
          {"SupportTeamEmail", "desk@example.org"},
          {"SupportTeamWebsite", "https://desk.example.org"}};
}

void createSample(const SampleSpec& spec) {
  // Nobody but the owner may write below the root, or no program takes it for one.
  ::umask(022);
  const Layout at{.root = fs::weakly_canonical(fs::absolute(spec.folder))};
  const auto vendors = fmt::format("http://127.0.0.1:{}", spec.port);
  clearOldSample(at.root);
  makeFolders(at);
  put(at.root / kMarker, fmt::format("port {}\n", spec.port));
  putInstaller(at, spec, vendors);
  putEnvironment(at, spec, vendors);
  if (spec.bigTree) {
    putBigTree(*spec.bigTree,
               {.root = at.root, .labelsFolder = at.labels, .vendors = at.vendors, .vendorsAddress = vendors});
    return;
  }
  const auto program = take(spec.programs / "sample_app");
  putPreferences(at);
  putApplications(at, program);
  putLabels(at, vendors, program);
}

}  // namespace corvane::sample
