// The applications on the sample Mac; what each one shows stands in sample/README.md.
#include <array>

#include "sample/catalogue.h"

namespace corvane::sample {

namespace {

using enum Executable;
constexpr auto kBinary = PlistFormat::binary;

constexpr std::string_view kLongName =
    "Thistle Office Professional Collection Presentation Designer and Slide Archive Manager";

constexpr std::array kApplications{
    InstalledApp{.name = "Quill", .identifier = "org.inkhaven.quill", .version = "2.3.1", .team = "QU1LLHAVN0"},
    InstalledApp{
        .name = "Larkspur Notes", .identifier = "org.larkspur.notes", .version = "5.1.0", .team = "LARKSPUR01"},
    InstalledApp{.name = "Ostrava Maps",
                 .identifier = "org.ostravia.maps",
                 .version = "11.2",
                 .build = "1120",
                 .format = kBinary,
                 .team = "0STRAV1AMP"},
    InstalledApp{.name = "Tamarisk Draw", .identifier = "org.tamarisk.draw", .version = "1.10", .team = "TAMAR1SKD0"},
    InstalledApp{.name = "Pellucid Reader",
                 .identifier = "org.pellucid.reader",
                 .version = "2024.3 (build 7)",
                 .team = "PELLUC1DR0"},
    InstalledApp{.name = "Wexford Sketch",
                 .identifier = "org.wexford.sketch",
                 .version = "v3-beta2",
                 .format = kBinary,
                 .team = "WEXF0RDSK0"},
    InstalledApp{
        .name = "Kestrel Mail", .identifier = "org.kestrelworks.mail", .version = "8.0.2", .team = "KESTRELWK1"},
    InstalledApp{.name = "Copperleaf Calendar",
                 .identifier = "org.copperleaf.calendar",
                 .version = "4.2",
                 .team = "C0PPERLEAF",
                 .storeReceipt = true},
    InstalledApp{.name = "Brindle Chat", .identifier = "org.brindle.chat", .version = "6.0", .team = "F0RE1GNTM9"},
    InstalledApp{.name = "Übersee Radio", .identifier = "org.uebersee.radio", .version = "1.4", .team = "UEBERSEE01"},
    InstalledApp{.name = "青い鳥ノート",
                 .identifier = "org.aoitori.note",
                 .version = "2.0",
                 .format = kBinary,
                 .team = "A01T0R1N00"},
    InstalledApp{.name = "Marrow Terminal",
                 .identifier = "org.marrow.terminal",
                 .version = "3.0",
                 .team = "MARR0WTRM0",
                 .damagedInfo = true},
    InstalledApp{.name = "Fathom Player",
                 .identifier = "org.fathom.player",
                 .version = "3.2",
                 .build = "3204",
                 .team = "FATH0MPLY0"},
    InstalledApp{
        .name = "Saltmarsh Browser", .identifier = "org.saltmarsh.browser", .version = "121.0", .team = "SALTMARSH1"},
    InstalledApp{.name = kLongName,
                 .identifier = "org.thistleoffice.presentation",
                 .version = "16.2",
                 .build = "16.2.24110301",
                 .team = "TH1STLE0FF"},
    InstalledApp{.name = "Juniper Backup",
                 .identifier = "org.juniper.backup",
                 .version = "1.8",
                 .folder = "~/Applications",
                 .team = "JUN1PERBK0"},
    InstalledApp{.name = "Orrery",
                 .identifier = "org.skylight.orrery",
                 .version = "7.0",
                 .folder = "Applications/Astronomy Suite",
                 .format = kBinary,
                 .team = "SKYL1GHT00"},
    InstalledApp{.name = "Cobble Archive",
                 .identifier = "org.cobble.archive",
                 .version = "2.9.4",
                 .folder = "Applications/Utilities",
                 .executable = thinArm64,
                 .team = "C0BBLEARCH"},
    InstalledApp{.name = "Winnow Cleaner",
                 .identifier = "org.winnow.cleaner",
                 .version = "1.0.9",
                 .format = kBinary,
                 .executable = thinIntel,
                 .team = "W1NN0WCLN0",
                 .icon = false},
    InstalledApp{.name = "Plover Typing",
                 .identifier = "org.ploverhill.typing",
                 .version = "4.4",
                 .executable = universal,
                 .team = "PL0VERH1LL"},
    InstalledApp{.name = "Sorrel Music",
                 .identifier = "org.sorrel.music",
                 .version = "12.7.1",
                 .executable = universal,
                 .team = "S0RRELMUS0"},
    InstalledApp{.name = "Ember Console", .identifier = "org.ember.console", .version = "5.0", .team = "EMBERC0NS0"},
    InstalledApp{.name = "Starling Sync", .identifier = "org.starling.sync", .version = "3.3", .team = "STARL1NGS0"},
    InstalledApp{
        .name = "Gannet Transfer", .identifier = "org.gannet.transfer", .version = "2.2", .team = "GANNETTR00"},
    InstalledApp{.name = "Oxbow Player", .identifier = "org.oxbow.player", .version = "1.1", .team = "0XB0WPLAY0"},
    InstalledApp{.name = "Rookery Server", .identifier = "org.rookery.server", .version = "9.0", .team = "R00KERYSV0"},
    InstalledApp{.name = "Moraine Photos",
                 .identifier = "org.moraine.photos",
                 .version = "6.4",
                 .format = kBinary,
                 .team = "M0RA1NEPH0"},
    InstalledApp{.name = "Drumlin Modeler",
                 .identifier = "org.drumlin.modeler",
                 .version = "10.0",
                 .executable = thinArm64,
                 .team = "DRUML1NM0D"},
    InstalledApp{.name = "Basalt Ledger", .identifier = "org.basalt.ledger", .version = "2.0", .team = "BASALTLED0"},
    InstalledApp{.name = "Basalt Reports", .identifier = "org.basalt.reports", .version = "2.0", .team = "BASALTLED0"},
    InstalledApp{.name = "Fennel Recipes",
                 .identifier = "org.fennel.recipes",
                 .version = "3.14",
                 .format = kBinary,
                 .team = "FENNELREC0"},
    InstalledApp{.name = "Gorse Charts", .identifier = "org.gorse.charts", .version = "2.1.7", .team = "G0RSECHRT0"},
    InstalledApp{
        .name = "Hazel Stopwatch", .identifier = "org.hazelgrove.stopwatch", .version = "0.9", .team = "HAZELGRV00"},
    InstalledApp{.name = "Inkwell Sign", .identifier = "org.inkwell.sign", .version = "20.1", .team = "1NKWELLS00"},
    InstalledApp{
        .name = "Kittiwake Weather", .identifier = "org.kittiwake.weather", .version = "1.2.0", .team = "K1TT1WAKE0"},
    InstalledApp{.name = "Lichen Scan",
                 .identifier = "org.lichen.scan",
                 .version = "7.7",
                 .format = kBinary,
                 .team = "L1CHENSCAN",
                 .icon = false},
    InstalledApp{.name = "Mullion Tiles", .identifier = "org.mullion.tiles", .version = "3.5.1", .team = "MULL10NT00"},
    InstalledApp{.name = "Nettle Keys", .identifier = "org.nettle.keys", .version = "8.9.0", .team = "NETTLEKEY0"},
    InstalledApp{.name = "Osier Video", .identifier = "org.osier.video", .version = "14.0.3", .team = "0S1ERV1DE0"},
    InstalledApp{
        .name = "Petrel Meetings", .identifier = "org.petrel.meetings", .version = "5.17", .team = "PETRELMEET"},
    InstalledApp{.name = "Quarry Tables", .identifier = "org.quarry.tables", .version = "9.2", .team = "QUARRYTAB0"},
    InstalledApp{.name = "Rushlight Lamp", .identifier = "org.rushlight.lamp", .version = "1.0", .team = "RUSHL1GHT0"},
    InstalledApp{.name = "Sedge Remote", .identifier = "org.sedge.remote", .version = "2.6", .team = "SEDGEREM00"},
    InstalledApp{.name = "Teasel Tracker", .identifier = "org.teasel.tracker", .version = "1.3", .team = "TEASELTRK0"},
    InstalledApp{.name = "Umber Paint", .identifier = "org.umber.paint", .version = "0.4", .icon = false},
    InstalledApp{.name = "Vetch Viewer", .identifier = "org.vetch.viewer", .version = "1.0", .team = "VETCHV1EW0"},
    InstalledApp{
        .name = "Willowherb Wiki", .identifier = "org.willowherb.wiki", .version = "4.0", .team = "W1LL0WHERB"},
    InstalledApp{
        .name = "Yarrow Health", .identifier = "org.yarrow.health", .version = "2.2", .executable = none, .team = ""},
};

}  // namespace

std::span<const InstalledApp> installedApplications() { return kApplications; }

}  // namespace corvane::sample
