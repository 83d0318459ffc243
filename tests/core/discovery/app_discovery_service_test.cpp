#include "core/discovery/app_discovery_service.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/discovery/bundle_reader.h"
#include "core/discovery/mac_folder.h"
#include "support/recording_log.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::MacFolder;

struct Discovery : ::testing::Test {
  Apps scan(std::optional<LabelSet> filter = std::nullopt, Apps saved = {}) {
    AppDiscoveryService service(config, true, std::move(filter), mac.constants, log, std::move(saved));
    auto apps = service.discoverApps();
    EXPECT_TRUE(apps) << (apps ? "" : apps.error().text);
    return apps.value_or(Apps{});
  }
  std::vector<std::string> labelsOf(const Apps& apps) {
    std::vector<std::string> labels;
    for (const auto& app : apps) labels.push_back(app.label.text);
    return labels;
  }
  std::vector<std::string> scannedLabels() { return labelsOf(scan()); }

  MacFolder mac;
  RecordingLog log;
  CorvaneConfiguration config;
};

TEST_F(Discovery, tellsAllThatIsKnownOfAnInstalledApplication) {
  mac.label("quill", "name=Quill\ntype=dmg\nexpectedTeamID=ABCDE12345\nappNewVersion=2.0\n");
  mac.label("stamp",
            "name=Stamp\ntype=zip\nversionKey=BuildVersion\nexpectedTeamID=ABCDE12345\nappNewVersion=\"see /news\"");
  const auto path =
      mac.bundle("/Applications/Quill.app", {.shortVersion = "1.5", .version = "77", .team = "ZZZZZ99999"});
  mac.bundle(
      "/Applications/Vendor/Suite/Stamp.app",
      {.team = "ABCDE12345", .format = PlistFormat::binary, .extra = {{"BuildVersion", "b9"}}, .fromStore = true});
  const auto apps = scan();
  ASSERT_THAT(labelsOf(apps), ElementsAre("quill", "stamp"));
  EXPECT_EQ(apps[0], (AppInfo{.label = Label("quill"),
                              .name = "Quill",
                              .appName = "Quill.app",
                              .expectedTeamID = "ABCDE12345",
                              .bundleTeamID = "ZZZZZ99999",
                              .teamIDMismatch = true,
                              .currentVersion = "1.5",
                              .currentBundleVersion = "77",
                              .newVersion = "2.0",
                              .appPath = path.string(),
                              .targetDir = "/Applications"}));
  EXPECT_TRUE(apps[1].macAppStoreManaged);
  EXPECT_FALSE(apps[1].teamIDMismatch);
  EXPECT_EQ(apps[1].currentVersion, "b9");
  EXPECT_EQ(apps[1].newVersion, std::nullopt) << "no version but a sentence";
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(Discovery, comparesOnlyRealTeamIdentifiers) {
  mac.label("apple", "name=Apple\nexpectedTeamID=\"Software Update\"");
  mac.label("script", "name=Script\nexpectedTeamID=ABCDE12345");
  mac.bundle("/Applications/Apple.app", {.team = "ABCDE12345"});
  mac.bundle("/Applications/Script.app");
  mac.write("/Applications/Script.app/Contents/_CodeSignature/CodeDirectory",
            mach_o::codeDirectory({.identifier = "script", .team = "ZZZZZ99999"}, "x"));
  const auto apps = scan();
  ASSERT_EQ(apps.size(), 2U);
  EXPECT_FALSE(apps[0].teamIDMismatch);
  EXPECT_TRUE(apps[1].teamIDMismatch) << "a signature beside a script counts too";
}

TEST_F(Discovery, looksWhereTheToolWouldLook) {
  const std::tuple<std::vector<std::string>, std::string, std::string> rows[] = {
      {{"/Users/sam/Applications/Quill.app"}, "type=dmg", ""},
      {{"/Users/sam/Applications/Quill.app"}, "type=pkg", ""},
      {{"/Users/sam/Applications/Quill.app", "/Applications/Quill.app"}, "type=pkg", "/Applications/Quill.app"},
      {{"/Applications/Utilities/Quill.app"}, "type=dmg", "/Applications/Utilities/Quill.app"},
      {{"/Applications/A/B/Quill.app"}, "type=dmg", "/Applications/A/B/Quill.app"},
      {{"/Applications/A/B/C/Quill.app"}, "type=dmg", ""},
      {{"/Applications/A/Quill.app", "/Applications/B/Quill.app"}, "type=dmg", ""},
      {{"/Applications/A/Quill.app", "/Applications/Quill.app"}, "type=dmg", "/Applications/Quill.app"},
      {{"/Applications/Quill.app"}, "targetDir=/Applications/Utilities", ""},
      {{"/Library/Tools/Quill.app"}, "targetDir=/Library/Tools", "/Library/Tools/Quill.app"},
      {{"/Library/Tools/Quill.app"}, "targetDir=/Library/Tools/../Tools", ""},
      {{"/Applications/Set/Quill.app"},
       "folderName=Set\nappName=\"${folderName}/Quill.app\"",
       "/Applications/Set/Quill.app"},
      {{"/Applications/quill.APP"}, "type=dmg", "/Applications/quill.APP"},
      {{"/Applications/Outer.app/Contents/Quill.app"}, "type=dmg", ""},
  };
  for (const auto& [bundles, body, found] : rows) {
    MacFolder own;
    own.label("quill", "name=Quill\n" + body);
    for (const auto& bundle : bundles) own.bundle(bundle);
    const auto apps = AppDiscoveryService(config, false, {}, own.constants, log).discoverApps();
    ASSERT_TRUE(apps);
    EXPECT_EQ(apps->empty() ? "" : apps->front().appPath->substr(own.root.string().size()), found)
        << bundles[0] << " " << body;
  }
}

TEST_F(Discovery, findsNamesOutsideAsciiHoweverTheyAreWritten) {
  mac.label("buero", "name=\"B\xC3\xBCro\"");
  mac.bundle("/Applications/Bu\xCC\x88ro.app");
  EXPECT_THAT(scannedLabels(), ElementsAre("buero"));
}

TEST_F(Discovery, aReceiptComesFirstButNotForAnApplicationThatWasThrownAway) {
  mac.label("quill", "name=Quill\ntype=pkg\npackageID=org.example.quill");
  mac.label("tool", "name=\"The Tool\"\ntype=pkg\npackageID=org.example.tool");
  mac.label("gone", "name=Gone\ntype=pkg\npackageID=org.example.gone");
  mac.label("own", "name=Own\ntype=pkg\npackageID=org.example.own\nappCustomVersion() { x; }");
  mac.label("torn", "name=Torn\ntype=pkg\npackageID=org.example.torn");
  mac.bundle("/Applications/Quill.app", {.shortVersion = "1.0", .version = "9"});
  mac.bundle("/Applications/Own.app", {.shortVersion = "3.0"});
  mac.receipt("org.example.quill", "1.2.3", "Applications");
  mac.receipt("org.example.tool", "5", "usr/local");
  mac.receipt("org.example.gone", "6", "Applications");
  mac.receipt("org.example.own", "7", "/");
  mac.write("/var/db/receipts/org.example.torn.plist", "bplist00 torn");
  const auto apps = scan();
  ASSERT_THAT(labelsOf(apps), ElementsAre("own", "quill", "tool"));
  EXPECT_EQ(apps[0].currentVersion, "3.0");
  EXPECT_EQ(apps[1].currentVersion, "1.2.3");
  EXPECT_EQ(apps[1].currentBundleVersion, "9");
  EXPECT_EQ(apps[2].currentVersion, "5");
  EXPECT_EQ(apps[2].appPath, std::nullopt);
  EXPECT_EQ(log.count("org.example.torn.plist"), 1U);
}

TEST_F(Discovery, oneLabelABundle) {
  mac.label("quillesr", "name=Quill");
  mac.label("quill|quill_intl", "name=Quill");
  mac.label("quillpkg", "name=Quill\npackageID=org.example.quill");
  mac.receipt("org.example.quill", "1", "usr");
  const auto path = mac.bundle("/Applications/Quill.app").string();
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
  const AppInfo saved{.label = Label("quillesr"), .appPath = path};
  EXPECT_THAT(labelsOf(scan(std::nullopt, {saved})), ElementsAre("quillesr"));
  config.optionalLabels = {"quill_*"};
  EXPECT_THAT(labelsOf(scan(std::nullopt, {saved})), ElementsAre("quill_intl"));
  config.optionalLabels.clear();
  config.ignoredLabels = {"quill"};
  EXPECT_THAT(scannedLabels(), ElementsAre("quillesr")) << "equally plain and short: by letters";
  config.ignoredLabels = {"*"};
  EXPECT_THAT(scannedLabels(), IsEmpty());
  EXPECT_EQ(AppDiscoveryService(config, false, {}, mac.constants, log).countInstalledAppsMatchingIgnoredLabels(), 1);
}

TEST_F(Discovery, requiredOnesAreListedWhenMissingAndFiltersAnswerEveryLabel) {
  mac.label("quill", "name=Quill");
  mac.label("stamp", "name=Stamp");
  config.ignoredLabels = {"*"};
  config.requiredLabels = {"quill"};
  config.optionalLabels = {"stamp"};
  const auto apps = scan();
  ASSERT_THAT(labelsOf(apps), ElementsAre("quill"));
  EXPECT_FALSE(apps[0].isInstalled());
  EXPECT_THAT(labelsOf(scan(std::set{Label("stamp"), Label("unknown")})), ElementsAre("stamp"));
  mac.bundle("/Applications/Stamp.app");
  EXPECT_THAT(scannedLabels(), ElementsAre("quill", "stamp"));
}

TEST_F(Discovery, theProgramsOwnLabelClaimsItsBundleAndHides) {
  mac.label("corvane", "name=Corvane");
  mac.label("corvane4", "name=Corvane");
  const auto path = mac.bundle("/Applications/Corvane.app").string();
  const AppInfo saved{.label = Label("corvane"), .appPath = path};
  EXPECT_THAT(labelsOf(scan(std::nullopt, {saved})), ElementsAre("corvane4"));
  config.selfUpdateEnabled = true;
  EXPECT_THAT(scannedLabels(), IsEmpty());
  EXPECT_THAT(labelsOf(scan(std::set{Label("corvane4")})), ElementsAre("corvane4"));
  config.selfUpdateEnabled = false;
  config.selfUpdateLabel = Label("corvane");
  EXPECT_THAT(scannedLabels(), ElementsAre("corvane"));
  config.discoverSelfUpdateLabel = false;
  EXPECT_THAT(scannedLabels(), IsEmpty());
  EXPECT_TRUE(AppDiscoveryService::isOtherBuiltInSelfProductLabel(Label("corvane4"), config));
  config.selfUpdateLabel = Label("acmecorvane");
  EXPECT_FALSE(AppDiscoveryService::isOtherBuiltInSelfProductLabel(Label("corvane4"), config));
}

TEST_F(Discovery, damagedFilesCountAsAbsentWithALineEach) {
  mac.label("quill", "name=Quill");
  mac.label("broken", "name=\"Broken");
  mac.bundle("/Applications/Quill.app");
  const auto info = "/Applications/Quill.app/Contents/Info.plist";
  for (const std::string_view bytes :
       {"", "<plist><dict><key>a</key></dict>", "bplist00", "not a list", "<plist><array/></plist>"}) {
    log.clear();
    mac.write(info, bytes);
    EXPECT_THAT(scannedLabels(), IsEmpty()) << bytes;
    EXPECT_EQ(log.count("Quill.app/Contents/Info.plist"), 1U) << bytes;
    EXPECT_EQ(log.count("broken.sh"), 1U);
  }
  config.requiredLabels = {"quill"};
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
}

TEST_F(Discovery, usualAndUnusualPropertyListsReadAlike) {
  mac.label("quill", "name=Quill");
  mac.bundle("/Applications/Quill.app");
  const auto list = [](std::string_view value) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><!-- a remark "
           "--><key>Inner</key><dict>"
           "<key>CFBundleShortVersionString</key><string>wrong</string></dict><key>Flags</key><array><true/>"
           "<integer>1</integer><data>AA==</data></array><key>CFBundleShortVersionString</key>" +
           std::string(value) + "</dict></plist>\n";
  };
  const std::pair<std::string, std::optional<std::string>> rows[] = {
      {"<string>1.5</string>", "1.5"},
      {"<string>1 &amp; 2</string>", "1 & 2"},
      {"<string>1&#46;5</string>", "1.5"},
      {"<string><![CDATA[1.5]]></string>", "1.5"},
      {"<string>1.5 \xC3\xA9</string>", "1.5 \xC3\xA9"},
      {"<string/>", std::nullopt},
      {"<integer>7</integer>", std::nullopt},
  };
  for (const auto& [value, version] : rows) {
    mac.write("/Applications/Quill.app/Contents/Info.plist", list(value));
    const auto apps = scan();
    ASSERT_EQ(apps.size(), 1U) << value;
    EXPECT_EQ(apps[0].currentVersion, version) << value;
  }
}

TEST_F(Discovery, leavesOutIgnoredPathsLinksAndOtherVolumes) {
  for (const auto* name : {"quill", "stamp", "pen", "ink"}) mac.label(name, std::string("name=") + name);
  mac.bundle("/Applications/quill.app");
  mac.bundle("/Applications/Chrome Apps.localized/stamp.app");
  mac.bundle("/Applications/Old Ones/pen.app");
  const auto outside = mac.bundle("/Volumes/Disk/ink.app");
  std::filesystem::create_directory_symlink(outside, mac.root / "Applications/ink.app");
  std::filesystem::create_directory_symlink(mac.root / "Applications/quill.app", mac.root / "Applications/alias.app");
  std::filesystem::create_directory_symlink(mac.root / "Applications", mac.root / "Applications/loop");
  config.ignoreExternalDrives = false;
  EXPECT_THAT(scannedLabels(), ElementsAre("ink", "pen", "quill"));
  const auto before = AppDiscoveryService::fingerprintInstalledApps(mac.constants, log);
  config.ignoreFilePaths = {"old ones"};
  config.ignoreExternalDrives = true;
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
  EXPECT_EQ(AppDiscoveryService::fingerprintInstalledApps(mac.constants, log), before);
  mac.bundle("/Applications/quill.app", {.shortVersion = "9"});
  EXPECT_EQ(AppDiscoveryService::fingerprintInstalledApps(mac.constants, log), before) << "versions do not count";
  mac.bundle("/Users/sam/Applications/new.app");
  EXPECT_NE(AppDiscoveryService::fingerprintInstalledApps(mac.constants, log), before);
}

// An empty volume there that only this process sees, for its lifetime; `mounted` is false where that is not allowed.
class PrivateVolume {
 public:
  explicit PrivateVolume(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    mounted = ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
              ::mount("none", folder_.c_str(), "tmpfs", 0, nullptr) == 0;
  }
  ~PrivateVolume() {
    if (mounted) ::umount2(folder_.c_str(), MNT_DETACH);
  }

  bool mounted = false;

 private:
  std::filesystem::path folder_;
};

TEST_F(Discovery, leavesOutWhatIsMountedAmongTheApplications) {
  for (const auto* name : {"quill", "stamp", "pen"}) mac.label(name, std::string("name=") + name);
  mac.bundle("/Applications/quill.app");
  const PrivateVolume folder(mac.root / "Applications/Old Ones");
  const PrivateVolume bundle(mac.root / "Applications/pen.app");
  if (!folder.mounted || !bundle.mounted) GTEST_SKIP() << "this account may not mount volumes";
  mac.bundle("/Applications/Old Ones/stamp.app");
  mac.bundle("/Applications/pen.app");
  config.ignoreExternalDrives = false;
  EXPECT_THAT(scannedLabels(), ElementsAre("pen", "quill", "stamp"));
  config.ignoreExternalDrives = true;
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
}

// Root reads every folder, so for its lifetime this process is nobody, who owns the tree.
class WithoutPrivilege {
 public:
  explicit WithoutPrivilege(const std::filesystem::path& tree) : before_(::geteuid()) {
    if (before_ != 0) return;
    bool owned = ::chown(tree.c_str(), kNobody, kNobody) == 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree))
      owned = ::lchown(entry.path().c_str(), kNobody, kNobody) == 0 && owned;
    EXPECT_TRUE(owned && ::seteuid(kNobody) == 0);
  }
  ~WithoutPrivilege() { EXPECT_EQ(::seteuid(before_), 0); }

 private:
  static constexpr uid_t kNobody = 65534;
  uid_t before_;
};

TEST_F(Discovery, unreadableFoldersNeverLookLikeMissingApplications) {
  mac.label("quill", "name=Quill");
  mac.bundle("/Applications/Quill.app");
  std::filesystem::create_directories(mac.root / "Applications/Closed");
  const WithoutPrivilege nobody(mac.root);
  ::chmod((mac.root / "Applications/Closed").c_str(), 0);
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
  EXPECT_EQ(log.count("Applications/Closed"), 1U);
  ::chmod((mac.root / "Applications/Closed").c_str(), 0700);
  ::chmod((mac.root / "Applications").c_str(), 0);
  EXPECT_FALSE(AppDiscoveryService(config, false, {}, mac.constants, log).discoverApps());
  ::chmod((mac.root / "Applications").c_str(), 0700);
}

TEST_F(Discovery, theCatalogueIsSummedUpAndWorded) {
  const auto summary = [&] {
    return AppDiscoveryService::summarizeLabelCatalog(config, mac.constants.fragmentsPath(), log);
  };
  using Availability = AppDiscoveryService::CatalogAvailability;
  EXPECT_TRUE(scan().empty());
  EXPECT_EQ(summary().availability, Availability::installomatorMissing);
  mac.write("/Library/Application Support/Corvane/Installomator.sh", "");
  EXPECT_EQ(summary().availability, Availability::labelsFolderMissing);
  mac.label("quill|pen", "name=Quill");
  mac.label("zz|pen", "name=Zed");
  config.ignoredLabels = {"p*"};
  EXPECT_EQ(summary().availability, Availability::ready);
  EXPECT_EQ(summary().ignoredLabelCount, 1) << "a pattern belongs to the first file alone";
  std::set<std::string> texts;
  for (const auto each : {Availability::ready, Availability::installomatorMissing, Availability::labelsFolderMissing})
    texts.insert(AppDiscoveryService::emptyDiscoveryStatusMessage({.availability = each}, 0));
  texts.insert(AppDiscoveryService::emptyDiscoveryStatusMessage({}, 1));
  const auto several = AppDiscoveryService::emptyDiscoveryStatusMessage({}, 12);
  EXPECT_NE(several.find("12 installed apps"), std::string::npos);
  EXPECT_EQ(texts.size(), 4U);
}

TEST_F(Discovery, settingsDropAndScopedResultsFoldIn) {
  const auto app = [](const char* label, const char* version) {
    return AppInfo{.label = Label(label), .name = label, .currentVersion = version};
  };
  config.ignoredLabels = {"b*"};
  config.optionalLabels = {"bc"};
  config.selfUpdateEnabled = true;
  const auto merged = AppDiscoveryService::mergingScopedDiscovery(
      {app("c", "2"), app("d", "1"), app("bb", "1")},
      {app("a", "1"), app("c", "1"), app("bc", "1"), app("corvane4", "1")}, config);
  EXPECT_EQ(merged, (Apps{app("a", "1"), app("c", "2"), app("bc", "1"), app("d", "1")}));
  EXPECT_THAT(AppDiscoveryService::droppingIgnoredLabels({Label("corvane4"), Label("bb"), Label("a")}, config),
              ElementsAre(Label("corvane4"), Label("a")));
  auto chrome = app("a", "1");
  chrome.appPath = "/Users/sam/Applications/Chrome Apps.localized/A.app";
  EXPECT_TRUE(AppDiscoveryService::droppingIgnoredApps({chrome}, config).empty());
  EXPECT_FALSE(AppDiscoveryService::reinstallsCurrentRequiredApps(config));
  config.installomatorOptions = "NOTIFY=silent INSTALL=force";
  EXPECT_TRUE(AppDiscoveryService::reinstallsCurrentRequiredApps(config));
  EXPECT_TRUE(AppDiscoveryService::isIgnoredLabel(Label("x"), "bfile", config));
}

// What a scan lets in must not be dropped by those who know the label alone.
TEST_F(Discovery, aFilesNameOnlyLeavesOutAndOnlyWhereNoLabelBearsIt) {
  const auto fragment = [&](std::string_view file, std::string_view head, std::string_view app) {
    mac.write("/Library/Application Support/Corvane/fragments/labels/" + std::string(file) + ".sh",
              std::string(head) + ")\nname=" + std::string(app) + "\n;;\n");
    mac.bundle("/Applications/" + std::string(app) + ".app");
  };
  fragment("oddfile", "quill", "Quill");
  fragment("zest", "zest|zestclient", "Zest");
  EXPECT_THAT(scannedLabels(), ElementsAre("quill", "zest"));

  config.ignoredLabels = {"*"};
  config.requiredLabels = {"oddfile", "zest"};
  auto apps = scan();
  EXPECT_THAT(labelsOf(apps), ElementsAre("zest"));
  EXPECT_EQ(AppDiscoveryService::droppingIgnoredApps(apps, config), apps);

  config.requiredLabels = {};
  config.ignoredLabels = {"oddfile", "zest"};
  EXPECT_THAT(scannedLabels(), ElementsAre("zestclient"));
}

TEST_F(Discovery, whatIsNoUtf8IsLeftOutWithALineAndSpoilsNothingElse) {
  mac.label("quill", "name=Quill");
  mac.label("zest", "name=Zest\nappNewVersion=\"1.0\xff\"");
  mac.bundle("/Applications/Quill.app");
  mac.bundle("/Applications/Zest.app");
  mac.bundle("/Applications/Odd\xff.app");
  mac.bundle("/Applications/Fol\xff/Other.app");
  EXPECT_THAT(scannedLabels(), ElementsAre("quill"));
  EXPECT_EQ(log.count("is no UTF-8"), 3U);
}

TEST_F(Discovery, findsTheFileOfAnIcon) {
  const auto icon = [&](const char* app, const char* named) {
    return bundleIconFile(
        mac.bundle("/Applications/" + std::string(app) + ".app", {.extra = {{"CFBundleIconFile", named}}}));
  };
  for (const auto* file : {"Plain.icns", "Whole.png", "../Out.icns"})
    mac.write("/Applications/A.app/Contents/Resources/" + std::string(file), "icon");
  const auto resources = mac.root / "Applications/A.app/Contents/Resources";
  EXPECT_EQ(icon("A", "Plain"), resources / "Plain.icns");
  EXPECT_EQ(icon("A", "Plain.icns"), resources / "Plain.icns");
  EXPECT_EQ(icon("A", "Whole.png"), resources / "Whole.png");
  for (const auto* none : {"", "Missing", "../Out.icns"}) EXPECT_EQ(icon("A", none), std::nullopt) << none;
  EXPECT_EQ(bundleIconFile(mac.bundle("/Applications/B.app")), std::nullopt);
  EXPECT_EQ(bundleIconFile(mac.root / "Applications/C.app"), std::nullopt);
}

}  // namespace
}  // namespace corvane
