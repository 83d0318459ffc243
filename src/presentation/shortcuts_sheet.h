// The sheet of keyboard shortcuts. The windows bind the keys; this says what they do.
#pragma once

#include <string>
#include <vector>

#include "presentation/dashboard_page.h"
#include "presentation/page_texts.h"

namespace corvane {

struct ShortcutLine {
  std::string keys;
  std::string text;
  std::string spokenText;
  friend bool operator==(const ShortcutLine&, const ShortcutLine&) = default;
};

struct ShortcutsSheet {
  std::string title;
  std::vector<ShortcutLine> lines;
  PageButton close;
};

[[nodiscard]] ShortcutsSheet makeShortcutsSheet(const PageTexts& texts);

template <>
struct PageFields<ShortcutLine> {
  static constexpr auto all =
      std::make_tuple(pageField("keys", &ShortcutLine::keys), pageField("text", &ShortcutLine::text),
                      pageField("spokenText", &ShortcutLine::spokenText));
};
template <>
struct PageFields<ShortcutsSheet> {
  static constexpr auto all =
      std::make_tuple(pageField("title", &ShortcutsSheet::title), pageField("lines", &ShortcutsSheet::lines),
                      pageField("close", &ShortcutsSheet::close));
};

}  // namespace corvane
