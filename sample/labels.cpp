// The label catalogue of the sample Mac; what each label shows stands in sample/README.md.
#include <array>

#include "sample/catalogue.h"

namespace corvane::sample {

namespace {

using enum VersionSource;

constexpr std::string_view kLongName =
    "Thistle Office Professional Collection Presentation Designer and Slide Archive Manager";
constexpr std::string_view kCustomVersion =
    R"(cat "$sampleRoot/Applications/Rushlight Lamp.app/Contents/Resources/release.txt" 2>/dev/null)";

constexpr std::array kLabels{
    // Installed, and behind.
    LabelSpec{.label = "quill", .name = "Quill", .latest = "2.4", .team = "QU1LLHAVN0"},
    LabelSpec{.label = "ostravamaps",
              .name = "Ostrava Maps",
              .latest = "11.3",
              .team = "0STRAV1AMP",
              .source = json,
              .type = "zip"},
    LabelSpec{
        .label = "pellucidreader", .name = "Pellucid Reader", .latest = "2024.4", .team = "PELLUC1DR0", .source = html},
    LabelSpec{
        .label = "wexfordsketch", .name = "Wexford Sketch", .latest = "v3-beta4", .team = "WEXF0RDSK0", .type = "tbz"},
    LabelSpec{.label = "kestrelmail",
              .name = "Kestrel Mail",
              .latest = "8.1.0",
              .team = "KESTRELWK1",
              .updateTool = "/Applications/Kestrel Mail.app/Contents/MacOS/kestrel-update"},
    LabelSpec{.label = "fathomplayer",
              .name = "Fathom Player",
              .latest = "3210",
              .team = "FATH0MPLY0",
              .versionKey = "CFBundleVersion",
              .latestShort = "3.2"},
    LabelSpec{.label = "saltmarshbrowser", .name = "Saltmarsh Browser", .latest = "122.0.1", .team = "SALTMARSH1"},
    LabelSpec{.label = "saltmarshbrowserpkg",
              .name = "Saltmarsh Browser",
              .latest = "122.0.1",
              .team = "SALTMARSH1",
              .type = "pkg",
              .alias = "saltmarshbrowser-enterprise"},
    LabelSpec{.label = "thistlepresentation",
              .name = kLongName,
              .latest = "16.3.24120101",
              .team = "TH1STLE0FF",
              .versionKey = "CFBundleVersion",
              .latestShort = "16.3"},
    LabelSpec{.label = "ueberseeradio", .name = "Übersee Radio", .latest = "1.5", .team = "UEBERSEE01"},
    LabelSpec{.label = "aoitorinote", .name = "青い鳥ノート", .latest = "2.1", .team = "A01T0R1N00", .source = json},
    LabelSpec{.label = "orrery",
              .name = "Orrery",
              .latest = "7.1",
              .team = "SKYL1GHT00",
              .file = "astronomysuite",
              .appName = "${folderName}/Orrery.app",
              .folderName = "Astronomy Suite"},
    LabelSpec{.label = "cobblearchive",
              .name = "Cobble Archive",
              .latest = "3.0",
              .team = "C0BBLEARCH",
              .targetDir = "/Applications/Utilities"},
    LabelSpec{
        .label = "winnowcleaner", .name = "Winnow Cleaner", .latest = "1.1", .team = "W1NN0WCLN0", .source = feed},
    LabelSpec{.label = "plovertyping", .name = "Plover Typing", .latest = "4.5", .team = "PL0VERH1LL", .source = fixed},
    LabelSpec{.label = "emberconsole",
              .name = "Ember Console",
              .latest = "5.2",
              .team = "EMBERC0NS0",
              .type = "pkg",
              .packageID = "org.ember.console.pkg"},
    LabelSpec{.label = "terncli",
              .name = "Tern",
              .latest = "0.12.0",
              .team = "TERNT00LS0",
              .source = release,
              .type = "pkg",
              .packageID = "org.ternworks.tern",
              .blockingProcesses = "NONE",
              .commandLineOnly = true},
    LabelSpec{.label = "hazelstopwatch", .name = "Hazel Stopwatch", .latest = "0.10", .team = "HAZELGRV00"},
    LabelSpec{
        .label = "inkwellsign", .name = "Inkwell Sign", .latest = "20.2", .team = "1NKWELLS00", .source = architecture},
    LabelSpec{.label = "kittiwakeweather",
              .name = "Kittiwake Weather",
              .latest = "1.3.0",
              .team = "K1TT1WAKE0",
              .source = release,
              .type = "zip"},
    LabelSpec{
        .label = "mulliontiles", .name = "Mullion Tiles", .latest = "3.6.0", .team = "MULL10NT00", .source = html},
    LabelSpec{.label = "osiervideo",
              .name = "Osier Video",
              .latest = "14.1.0",
              .team = "0S1ERV1DE0",
              .blockingProcesses = "Osier Video|Quill"},
    LabelSpec{.label = "petrelmeetings",
              .name = "Petrel Meetings",
              .latest = "5.18",
              .team = "PETRELMEET",
              .blockingProcesses = "NONE"},
    LabelSpec{.label = "rushlightlamp",
              .name = "Rushlight Lamp",
              .latest = "1.1",
              .team = "RUSHL1GHT0",
              .customVersion = kCustomVersion},
    LabelSpec{
        .label = "willowherbwiki", .name = "Willowherb Wiki", .latest = "4.1", .team = "W1LL0WHERB", .source = slow},
    LabelSpec{.label = "juniperbackup", .name = "Juniper Backup", .latest = "1.9", .team = "JUN1PERBK0"},
    LabelSpec{.label = "copperleafcalendar", .name = "Copperleaf Calendar", .latest = "4.3", .team = "C0PPERLEAF"},
    LabelSpec{.label = "brindlechat", .name = "Brindle Chat", .latest = "6.1", .team = "BR1NDLECH0"},
    LabelSpec{.label = "umberpaint", .name = "Umber Paint", .latest = "0.5", .team = "UMBERPNT00"},
    LabelSpec{.label = "marrowterminal", .name = "Marrow Terminal", .latest = "3.1", .team = "MARR0WTRM0"},
    LabelSpec{.label = "yarrowhealth", .name = "Yarrow Health", .latest = "2.3", .team = "YARR0WHLT0"},

    // Installed, and current or ahead.
    LabelSpec{.label = "larkspurnotes", .name = "Larkspur Notes", .latest = "5.1.0", .team = "LARKSPUR01"},
    LabelSpec{.label = "tamariskdraw", .name = "Tamarisk Draw", .latest = "1.10.0", .team = "TAMAR1SKD0"},
    LabelSpec{.label = "sorrelmusic", .name = "Sorrel Music", .latest = "12.7.1", .team = "S0RRELMUS0", .source = feed},
    LabelSpec{
        .label = "fennelrecipes", .name = "Fennel Recipes", .latest = "3.14", .team = "FENNELREC0", .source = json},
    LabelSpec{.label = "gorsecharts", .name = "Gorse Charts", .latest = "2.1.7", .team = "G0RSECHRT0"},
    LabelSpec{.label = "lichenscan", .name = "Lichen Scan", .latest = "7.7", .team = "L1CHENSCAN", .source = feed},
    LabelSpec{.label = "nettlekeys", .name = "Nettle Keys", .latest = "8.9.0", .team = "NETTLEKEY0", .source = json},
    LabelSpec{.label = "quarrytables", .name = "Quarry Tables", .latest = "9.1", .team = "QUARRYTAB0"},

    // Checks and installations that go wrong.
    LabelSpec{.label = "starlingsync", .name = "Starling Sync", .latest = "3.4", .team = "STARL1NGS0", .source = hang},
    LabelSpec{
        .label = "gannettransfer", .name = "Gannet Transfer", .latest = "2.3", .team = "GANNETTR00", .source = garbage},
    LabelSpec{.label = "gannetlite", .name = "Gannet Lite", .latest = "1.0", .team = "GANNETTR00", .source = broken},
    LabelSpec{.label = "oxbowplayer", .name = "Oxbow Player", .latest = "1.2", .team = "0XB0WPLAY0", .source = down},
    LabelSpec{.label = "rookeryserver", .name = "Rookery Server", .latest = "9.1", .team = "R00KERYSV0"},
    LabelSpec{
        .label = "morainephotos", .name = "Moraine Photos", .latest = "6.5", .team = "M0RA1NEPH0", .source = none},
    LabelSpec{.label = "drumlinmodeler",
              .name = "Drumlin Modeler",
              .latest = "11.0",
              .team = "DRUML1NM0D",
              .minimumSystem = "99.0"},
    LabelSpec{.label = "sedgeremote",
              .name = "Sedge Remote",
              .latest = "2.7",
              .team = "SEDGEREM00",
              .delivery = Delivery::foreignTeam},
    LabelSpec{.label = "teaseltracker",
              .name = "Teasel Tracker",
              .latest = "1.4",
              .team = "TEASELTRK0",
              .delivery = Delivery::missing},

    // Excluded by the settings, and one of them let in again.
    LabelSpec{.label = "basaltledger", .name = "Basalt Ledger", .latest = "2.1", .team = "BASALTLED0"},
    LabelSpec{.label = "basaltreports", .name = "Basalt Reports", .latest = "2.1", .team = "BASALTLED0"},

    // Not installed; the first two are required.
    LabelSpec{.label = "heronvpn", .name = "Heron Tunnel", .latest = "3.0.1", .team = "HER0NTUN00"},
    LabelSpec{.label = "alderagent",
              .name = "Alder Agent",
              .latest = "1.0.4",
              .team = "ALDERAGT00",
              .type = "pkg",
              .packageID = "org.alder.agent"},
    LabelSpec{.label = "birchcode", .name = "Birch Code", .latest = "1.92.0", .team = "B1RCHC0DE0", .type = "zip"},
    LabelSpec{.label = "cairnpad", .name = "Cairn Pad", .latest = "0.3", .team = "CA1RNPAD00"},
    LabelSpec{.label = "damsonmixer", .name = "Damson Mixer", .latest = "2.2", .team = "DAMS0NM1X0", .source = json},
    LabelSpec{.label = "elderflowplan", .name = "Elderflow Plan", .latest = "19", .team = "ELDERFL0W0"},
    LabelSpec{
        .label = "foxglovelab", .name = "Foxglove Lab Bench", .latest = "4.1", .team = "F0XGL0VE00", .source = feed},
    LabelSpec{.label = "gentianwriter",
              .name = "Gentian Writer",
              .latest = "1.0",
              .team = "GENT1ANWR0",
              .delivery = Delivery::wrongName},
    LabelSpec{.label = "hawthornpass",
              .name = "Hawthorn Pass",
              .latest = "6.6.6",
              .team = "HAWTH0RNP0",
              .delivery = Delivery::errorPage},
    LabelSpec{.label = "iriscolor", .name = "Iris Color Picker", .latest = "2", .team = "1R1SC0L0R0", .source = fixed},
    LabelSpec{.label = "jonquilforms", .name = "Jonquil Forms", .latest = "7.1", .team = "J0NQU1LF00", .type = "tbz"},
    LabelSpec{
        .label = "knapweedgit", .name = "Knapweed Commits", .latest = "0.8.1", .team = "KNAPWEED00", .source = release},
    LabelSpec{.label = "lovageshell", .name = "Lovage Shell", .latest = "3.1", .team = "L0VAGESHL0"},
    LabelSpec{.label = "medlarfonts", .name = "Medlar Fonts", .latest = "1.5", .team = "MEDLARF0N0"},
    LabelSpec{
        .label = "nigellaframe", .name = "Nigella Frame", .latest = "10.10", .team = "N1GELLAFR0", .source = html},
};

}  // namespace

std::span<const LabelSpec> labelCatalogue() { return kLabels; }

std::string LabelSpec::bundleFileName() const {
  if (appName.empty()) return std::string(name) + ".app";
  return std::string(appName.substr(appName.rfind('/') + 1));
}

}  // namespace corvane::sample
