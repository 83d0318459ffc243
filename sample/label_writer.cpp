#include "sample/label_writer.h"

#include <fmt/format.h>

namespace corvane::sample {

namespace {

// A port below 1024 that nothing listens on: connections are refused at once.
constexpr std::string_view kVendorThatIsDown = "http://127.0.0.1:1";

std::string curlOf(std::string_view vendors, std::string_view page) {
  return fmt::format("curl -fsL \"{}/{}\"", vendors, page);
}

// The lines that set appNewVersion.
std::string versionLines(const LabelSpec& label, std::string_view vendors) {
  const auto name = label.label;
  switch (label.source) {
    case VersionSource::page:
    case VersionSource::slow:
      return fmt::format("    appNewVersion=$({})\n", curlOf(vendors, fmt::format("{}/version.txt", name)));
    case VersionSource::json:
      return fmt::format("    appNewVersion=$(getJSONValue \"$({})\" \"latest.version\")\n",
                         curlOf(vendors, fmt::format("{}/latest.json", name)));
    case VersionSource::html:
      return fmt::format("    appNewVersion=$({} | grep -o 'Version [^< ]*' | head -1 | cut -d ' ' -f 2)\n",
                         curlOf(vendors, fmt::format("{}/index.html", name)));
    case VersionSource::feed:
      return fmt::format("    appNewVersion=$({} | xpath 'string(//item[1]/enclosure/@shortVersion)')\n",
                         curlOf(vendors, fmt::format("{}/feed.xml", name)));
    case VersionSource::release:
      return fmt::format("    appNewVersion=$(versionFromGit sample {})\n", name);
    case VersionSource::architecture:
      return fmt::format(
          "    if [[ $(arch) == \"arm64\" ]]; then\n        appNewVersion=$({})\n    else\n        "
          "appNewVersion=$({})\n    fi\n",
          curlOf(vendors, fmt::format("{}/version-arm64.txt", name)),
          curlOf(vendors, fmt::format("{}/version-x86_64.txt", name)));
    case VersionSource::fixed:
      return fmt::format("    appNewVersion=\"{}\"\n", label.latest);
    case VersionSource::none:
      return {};
    case VersionSource::hang:
      return fmt::format(
          "    appNewVersion=\"\"\n    while [[ -z \"$appNewVersion\" ]]; do\n        appNewVersion=$({})\n        "
          "sleep 1\n    done\n",
          curlOf(vendors, fmt::format("{}/version.txt", name)));
    case VersionSource::garbage:
      return fmt::format("    appNewVersion=$(curl -sL \"{}/{}/version.txt\")\n", vendors, name);
    case VersionSource::broken:
      return fmt::format("    appNewVersion=$({} | cut -d ' ' -f 3).0\n",
                         curlOf(vendors, fmt::format("{}/gone.txt", name)));
    case VersionSource::down:
      return fmt::format("    appNewVersion=$(curl -fsL \"{}/{}/version.txt\")\n", kVendorThatIsDown, name);
  }
  return {};
}

std::string assignment(std::string_view key, std::string_view value) {
  return value.empty() ? std::string() : fmt::format("    {}=\"{}\"\n", key, value);
}

std::string blockingLine(std::string_view processes) {
  if (processes.empty()) return {};
  std::string items;
  while (true) {
    const auto bar = processes.find('|');
    const auto one = processes.substr(0, bar);
    items += one == "NONE" ? " NONE" : fmt::format(" \"{}\"", one);
    if (bar == std::string_view::npos) break;
    processes.remove_prefix(bar + 1);
  }
  return fmt::format("    blockingProcesses=({} )\n", items);
}

std::string downloadLine(const LabelSpec& label, std::string_view vendors) {
  const auto server = label.source == VersionSource::down ? kVendorThatIsDown : vendors;
  return assignment("downloadURL", fmt::format("{}/{}", server, downloadPath(label)));
}

}  // namespace

std::string labelFragment(const LabelSpec& label, std::string_view vendors) {
  std::string text;
  if (!label.alias.empty()) text += fmt::format("{}|\\\n", label.alias);
  text += fmt::format("{})\n", label.label);
  text += assignment("name", label.name);
  text += assignment("type", label.type);
  text += assignment("folderName", label.folderName);
  text += assignment("appName", label.appName);
  text += assignment("packageID", label.packageID);
  text += assignment("versionKey", label.versionKey);
  text += assignment("targetDir", label.targetDir);
  text += downloadLine(label, vendors);
  text += versionLines(label, vendors);
  if (!label.customVersion.empty()) text += fmt::format("    appCustomVersion() {{ {}; }}\n", label.customVersion);
  text += assignment("expectedTeamID", label.team);
  text += assignment("updateTool", label.updateTool);
  text += blockingLine(label.blockingProcesses);
  return text + "    ;;\n";
}

std::string fragmentFileName(const LabelSpec& label) {
  return std::string(label.file.empty() ? label.label : label.file);
}

std::string downloadPath(const LabelSpec& label) { return fmt::format("download/{}.{}", label.label, label.type); }

std::string updateToolScript(const LabelSpec& label) {
  return fmt::format(
      "#!/bin/zsh -f\n# Updates {0} in the application's own way.\n"
      "exec \"${{0:A:h:h:h:h:h}}/Library/Application Support/Corvane/Installomator.sh\" {1} 'updateTool=\"\"' DEBUG=0 "
      "BLOCKING_PROCESS_ACTION=ignore NOTIFY=silent >/dev/null 2>&1\n",
      label.name, label.label);
}

}  // namespace corvane::sample
