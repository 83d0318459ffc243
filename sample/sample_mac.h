// A folder that every program of this system takes for a Mac. Writes below that folder only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/plist.h"
#include "sample/big_tree.h"

namespace corvane::sample {

// The sample's one user.
inline constexpr std::string_view kUserName = "robin";

// Names, at a folder's top, what makes it a sample: only such a folder is ever replaced.
inline constexpr std::string_view kMarker = ".corvane-sample";

struct SampleSpec {
  std::filesystem::path folder;
  std::filesystem::path programs;               // holds sample_app, sample_prompt and sample_tool
  int port = 0;                                 // of the vendors' server, on the loopback address
  std::optional<std::filesystem::path> bundle;  // Corvane.app, for the `env` file
  std::optional<BigTree> bigTree;               // instead of the catalogue of invented applications
};

// The choices of the sample's user, and what the organisation gives every Mac.
[[nodiscard]] PlistDict userSettings();
[[nodiscard]] PlistDict managedSettings();

// Makes the sample. An old sample in the same place is replaced; a folder that holds anything else is
// refused. Throws MakingFailed.
void createSample(const SampleSpec& spec);

}  // namespace corvane::sample
