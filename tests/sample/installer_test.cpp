// The installer tool, run as a program on a fresh sample with its vendors.

#include "sample/catalogue.h"
#include "support/test.h"
#include "tests/sample/sample_fixture.h"

namespace corvane::sample {
namespace {

using testing::HasSubstr;

TEST_F(SampleTest, RunsEndWithTheCodeAndLineOfTheirCase) {
  const std::tuple<std::string_view, int, std::string_view> runs[] = {
      {"larkspurnotes", 0, "No newer version."},
      {"nosuchlabel", 1, "unknown label"},
      {"zzdamaged", 1, "unknown label"},
      {"quill;id", 1, "unknown label"},
      {"rookeryserver", 9, "End Installomator, exit code 9"},
      {"sedgeremote", 5, "Team IDs do not match"},
      {"teaseltracker", 2, "error downloading"},
      {"hawthornpass", 2, "ASCII text"},
      {"oxbowplayer", 2, "Latest version not specified."},
      {"gentianwriter", 8, "could not find"},
      {"drumlinmodeler", 15, "too old"},
      {"copperleafcalendar", 23, "App Store"},
      {"gorsecharts", 0, "Latest version of Gorse Charts is 2.1.7"},
      {"juniperbackup", 0, "could not determine location of Juniper Backup.app"},
  };
  for (const auto& [label, code, says] : runs) {
    const auto outcome = install(label);
    EXPECT_EQ(outcome.code, code) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr(says)) << label;
  }
  EXPECT_EQ(version("Rookery Server.app"), "9.0");
  EXPECT_EQ(version("Sedge Remote.app"), "2.6");
}

TEST_F(SampleTest, InstallationsReplaceWhatIsThere) {
  const std::pair<std::string_view, std::string> installations[] = {
      {"quill", "Quill.app"},
      {"wexfordsketch", "Wexford Sketch.app"},
      {"aoitorinote", "青い鳥ノート.app"},
      {"ueberseeradio", "Übersee Radio.app"},
      {"plovertyping", "Plover Typing.app"},
      {"orrery", "Astronomy Suite/Orrery.app"},
      {"cobblearchive", "Utilities/Cobble Archive.app"},
      {"kittiwakeweather", "Kittiwake Weather.app"},
      {"rushlightlamp", "Rushlight Lamp.app"},
      {"saltmarshbrowser-enterprise", "Saltmarsh Browser.app"},
      {"heronvpn", "Heron Tunnel.app"},
      {"marrowterminal", "Marrow Terminal.app"}};
  for (const auto& [label, bundle] : installations) {
    const auto outcome = install(label);
    EXPECT_EQ(outcome.code, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("version " + version(bundle) + "\n")) << label;
  }
  for (const auto label : {"wexfordsketch", "orrery", "rushlightlamp"})
    EXPECT_THAT(install(label).output, HasSubstr("No newer version.")) << label;
  EXPECT_EQ(version("Quill.app"), "2.4");
  EXPECT_EQ(install("fathomplayer").code, 0);
  EXPECT_EQ(version("Fathom Player.app", "CFBundleVersion"), "3210");
  EXPECT_TRUE(std::filesystem::is_empty(root_ / "tmp"));
}

TEST_F(SampleTest, PackagesLeaveAReceipt) {
  EXPECT_EQ(install("terncli").code, 0);
  EXPECT_EQ(plistText("var/db/receipts/org.ternworks.tern.plist", "PackageVersion"), "0.12.0");
  EXPECT_THAT(take(root_ / "usr/local/bin/terncli"), HasSubstr("0.12.0"));
  EXPECT_EQ(install("emberconsole").code, 0);
  EXPECT_EQ(version("Ember Console.app"), "5.2");
  EXPECT_EQ(plistText("var/db/receipts/org.ember.console.pkg.plist", "PackageVersion"), "5.2");
}

TEST_F(SampleTest, ArgumentsAreEvaluatedBeforeAndAfterTheLabel) {
  EXPECT_EQ(install("version", {}).output, "10.9\n");
  const auto named = install("quill", {"RETURN_LABEL_NAME=1", "DEBUG=0", "name='Renamed App'"});
  EXPECT_THAT(named.output, testing::EndsWith("\nRenamed App\n"));
  EXPECT_EQ(install("quill", {"", "DEBUG=0"}).code, 0);
  EXPECT_EQ(version("Quill.app"), "2.3.1");
  put(root_ / "marked", "");
  const auto evaluated = install("larkspurnotes", {"DEBUG=0", "PROXY=; rm " + quoted((root_ / "marked").string())});
  EXPECT_EQ(evaluated.code, 0);
  EXPECT_FALSE(std::filesystem::exists(root_ / "marked"));
}

TEST_F(SampleTest, OpenApplicationsAreTreatedAsTheActionSays) {
  const std::tuple<std::string_view, std::string, std::string_view, std::string_view, int, bool> rows[] = {
      {"quill", "Quill", "silent_fail", "", 12, true},
      {"quill", "Quill", "prompt_user", "later", 10, true},
      {"quill", "Quill", "prompt_user", "timeout", 25, true},
      {"quill", "Quill", "nonsense", "", 11, true},
      {"quill", "Quill", "prompt_user", "quit", 0, false},
      {"pellucidreader", "Pellucid Reader", "quit", "", 0, false},
      {"mulliontiles", "Mullion Tiles", "kill", "", 0, false},
      {"hazelstopwatch", "Hazel Stopwatch", "ignore", "", 0, true},
      {"petrelmeetings", "Petrel Meetings", "silent_fail", "", 0, true},
      {"ueberseeradio", "Übersee Radio", "tell_user", "quit", 0, false},
  };
  for (const auto& [label, name, action, answer, code, runsOn] : rows) {
    const auto given = support() / "sample/answer" / label;
    std::filesystem::remove(given);
    if (!answer.empty()) put(given, answer);
    const auto pid = open(name);
    const auto outcome = install(label, {"DEBUG=0", "REOPEN=no", "BLOCKING_PROCESS_ACTION=" + std::string(action)});
    EXPECT_EQ(outcome.code, code) << label << " " << action << "\n" << outcome.output;
    EXPECT_EQ(stillRuns(pid), runsOn) << label << " " << action;
  }
}

TEST_F(SampleTest, FragmentsTellWhatTheirVendorsOffer) {
  for (const auto& label : labelCatalogue()) {
    const bool sound = label.source < VersionSource::none || label.source == VersionSource::slow;
    if (!sound) continue;
    const auto file = label.file.empty() ? label.label : label.file;
    const auto fragments = support() / "fragments";
    const auto script = "LOGGING=INFO DEBUG=1 INSTALL=force label=" + std::string(label.label) + "; source " +
                        quoted((fragments / "functions.sh").string()) + "; eval \"case \\$label in\n$(<" +
                        quoted((fragments / "labels" / (std::string(file) + ".sh")).string()) +
                        ")\nesac\"; print -r -- \"$name|$appNewVersion\"";

    EXPECT_EQ(shell("zsh -f -c " + quoted(script)).output,
              std::string(label.name) + "|" + std::string(label.latest) + "\n")
        << label.label;
  }
}

TEST_F(SampleTest, IsReplacedOnlyWhereASampleLies) {
  put(root_ / "Applications/Extra.txt", "mine");
  createSample({.folder = root_, .programs = SAMPLE_PROGRAMS, .port = 5000, .bundle = {}, .bigTree = {}});
  EXPECT_FALSE(std::filesystem::exists(root_ / "Applications/Extra.txt"));
  std::filesystem::remove(root_ / kMarker);
  EXPECT_THROW(createSample({.folder = root_, .programs = SAMPLE_PROGRAMS, .port = 5000, .bundle = {}, .bigTree = {}}),
               MakingFailed);
  EXPECT_TRUE(std::filesystem::exists(root_ / "Applications/Quill.app"));
}

}  // namespace
}  // namespace corvane::sample
