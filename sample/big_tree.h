// Large trees for benchmarks: bundles and labels by the thousand, the same for the same seed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvane::sample {

struct BigTree {
  int bundles = 0;
  int labels = 0;
  std::uint64_t seed = 1;
};

// Puts bundles into <root>/Applications (every tenth into a subfolder) and fragments into `labelsFolder`.
// Four labels of five know a bundle while there are bundles. The version pages are <vendors>/big/<label>.txt.
struct BigTreePlaces {
  std::filesystem::path root;
  std::filesystem::path labelsFolder;
  std::filesystem::path vendors;
  std::string vendorsAddress;
};
void putBigTree(const BigTree& tree, const BigTreePlaces& places);

}  // namespace corvane::sample
