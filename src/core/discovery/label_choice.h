// Which of several labels an installed bundle belongs to. Pure decisions; nothing is read here.
#pragma once

#include <string_view>
#include <vector>

#include "core/discovery/label_fragment.h"

namespace corvane {

// One label that could manage a bundle, with what speaks for it.
struct LabelCandidate {
  Label label;
  const LabelFragment* fragment = nullptr;
  bool builtIn = false;       // the program's own label, which always claims the program's own bundle
  bool asked = false;         // named by a required or optional pattern
  bool alreadyBound = false;  // the label that the saved list has for this bundle
};

// The candidate that wins, null without any. In this order: the program's own label; a required or optional one; the
// one already bound; the one whose name matches the bundle exactly ("quilldraw" or the name "Quill Draw" for "Quill
// Draw.app", the label before the name); a plain one (no "_" or "-" variant, no beta or other early version); the
// shortest; the first by letters.
[[nodiscard]] const LabelCandidate* chooseLabel(const std::vector<LabelCandidate>& candidates,
                                                std::string_view bundleName);

}  // namespace corvane
