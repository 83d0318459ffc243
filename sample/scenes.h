// States to start the application in on a sample Mac. A scene is preferences and receipts, which is all that
// the application takes its state from; nothing is started, opened or installed here.
#pragma once

#include <filesystem>
#include <span>
#include <string_view>

#include "base/calendar.h"
#include "base/date.h"
#include "sample/files.h"

namespace corvane::sample {

struct Scene {
  std::string_view name;
  std::string_view shows;  // a sentence
  std::string_view hint;   // what to wait for or to press
};

[[nodiscard]] std::span<const Scene> scenes();

// Null when no scene bears the name.
[[nodiscard]] const Scene* sceneNamed(std::string_view name);

// No inventory lies on the sample, and a scene invents none: `corvanectl discover` makes it.
class NothingDiscovered : public MakingFailed {
 public:
  using MakingFailed::MakingFailed;
};

// Writes the user's and the managed preferences and the receipts anew; of what lay there only the inventory and
// what is known of the helper stay. `now` is the moment at which a prompt falls due. Throws MakingFailed, with
// nothing written, where no sample lies, nothing is left to update, or the application is at work on it.
void putScene(const Scene& scene, const std::filesystem::path& sample, Date now, const Calendar& calendar);

}  // namespace corvane::sample
