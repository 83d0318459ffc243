#include "sample/big_tree.h"

#include <fmt/format.h>

#include <array>

#include "sample/bundle_writer.h"
#include "sample/files.h"

namespace corvane::sample {

namespace {

// SplitMix64: a stream that depends on the seed alone, on every machine.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : state_(seed) {}
  std::uint64_t below(std::uint64_t bound) {
    auto z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return (z ^ (z >> 31)) % bound;
  }

 private:
  std::uint64_t state_;
};

constexpr std::array kWords{"Amber", "Bracken", "Clover", "Dapple",  "Eider",  "Furze",  "Garnet", "Hollow",
                            "Islet", "Jackdaw", "Knoll",  "Lapwing", "Meadow", "Nimbus", "Otter",  "Pebble"};

std::string appName(int index) {
  return fmt::format("{} {:04}", kWords[static_cast<std::size_t>(index) % kWords.size()], index);
}
std::string teamOf(int index) { return fmt::format("TEAM{:06}", index); }
std::string version(Chance& chance) {
  return fmt::format("{}.{}.{}", 1 + chance.below(20), chance.below(30), chance.below(10));
}

void putBundles(const BigTree& tree, const std::filesystem::path& root) {
  Chance chance(tree.seed);
  constexpr std::array kExecutables{Executable::thinArm64, Executable::universal, Executable::thinIntel};
  for (int i = 0; i < tree.bundles; ++i) {
    auto folder = root / "Applications";
    if (i % 10 == 9) folder /= fmt::format("Suite {:02}", i % 100);
    const BundleSpec bundle{.fileName = appName(i) + ".app",
                            .identifier = fmt::format("org.sample.big{:04}", i),
                            .version = version(chance),
                            .build = fmt::format("{}", 1000 + chance.below(9000)),
                            .format = i % 2 == 0 ? PlistFormat::xml : PlistFormat::binary,
                            .executable = kExecutables[chance.below(kExecutables.size())],
                            .team = teamOf(i)};
    putBundle(folder, bundleFiles(bundle, {}));
  }
}

std::string bigFragment(int index, int bundle, std::string_view vendors) {
  const auto label = fmt::format("big{:04}", index);
  std::string text = index % 20 == 0 ? fmt::format("{0}|\\\n{0}-beta)\n", label) : fmt::format("{})\n", label);
  text += fmt::format("    # {} of {}\n    name=\"{}\"\n    type=\"{}\"\n", label, kWords[0], appName(bundle),
                      index % 4 == 0 ? "pkg" : "dmg");
  if (index % 7 == 0) text += fmt::format("    packageID=\"org.sample.pkg{:04}\"\n", index);
  if (index % 10 == 3) text += "    versionKey=\"CFBundleVersion\"\n";
  text += fmt::format("    downloadURL=\"{}/download/{}.dmg\"\n", vendors, label);
  text += fmt::format("    appNewVersion=$(curl -fsL \"{}/big/{}.txt\")\n", vendors, label);
  text += fmt::format("    expectedTeamID=\"{}\"\n", teamOf(bundle));
  if (index % 9 == 0)
    text += fmt::format("    blockingProcesses=( \"{}\" \"{} Agent\" )\n", appName(bundle), appName(bundle));
  return text + "    ;;\n";
}

}  // namespace

void putBigTree(const BigTree& tree, const BigTreePlaces& places) {
  putBundles(tree, places.root);
  Chance chance(tree.seed + 1);
  for (int i = 0; i < tree.labels; ++i) {
    // Every fifth label is of an application that is not there.
    const bool missing = i % 5 == 4 || tree.bundles == 0;
    const int bundle =
        missing ? tree.bundles + i : static_cast<int>(chance.below(static_cast<std::uint64_t>(tree.bundles)));
    const auto label = fmt::format("big{:04}", i);
    put(places.labelsFolder / (label + ".sh"), bigFragment(i, bundle, places.vendorsAddress));
    put(places.vendors / "big" / (label + ".txt"), version(chance) + "\n");
  }
}

}  // namespace corvane::sample
