#include "presentation/shortcuts_sheet.h"

#include <array>
#include <string_view>

namespace corvane {
namespace {

struct Row {
  std::string_view keys;  // a keyboard names some of its keys in its own language
  std::string_view text;
};

// In the order in which a person meets them: the window, the list, the settings.
constexpr auto kRows = std::to_array<Row>({
    {toLocalize("Ctrl+1"), toLocalize("Show the status of the applications")},
    {toLocalize("Ctrl+2"), toLocalize("Show the logs")},
    {toLocalize("F5, Ctrl+R"), toLocalize("Check for updates; in the logs, read them again")},
    {toLocalize("Ctrl+F"), toLocalize("Go to the filter; in the logs, search")},
    {"?", toLocalize("Tell why the selected application stands where it does")},
    {"↵", toLocalize("Show or hide the history of the selected application")},
    {toLocalize("Ctrl+,"), toLocalize("Open the settings")},
    {toLocalize("Ctrl+S"), toLocalize("Save the settings")},
    {toLocalize("Ctrl+Tab"), toLocalize("Go to the next section of the settings")},
    {"Esc", toLocalize("Close what floats above the window")},
    {toLocalize("Ctrl+W"), toLocalize("Close the window")},
    {toLocalize("F1, Ctrl+?"), toLocalize("Show these shortcuts")},
});

}  // namespace

ShortcutsSheet makeShortcutsSheet(const PageTexts& texts) {
  ShortcutsSheet sheet{.title = texts.localized("Keyboard Shortcuts"),
                       .lines = {},
                       .close = {.text = texts.localized("Close"), .help = "", .visible = true, .enabled = true}};
  for (const auto& row : kRows) {
    auto keys = texts.localized(row.keys);
    auto text = texts.localized(row.text);
    auto spoken = keys + ": " + text;
    sheet.lines.push_back({std::move(keys), std::move(text), std::move(spoken)});
  }
  return sheet;
}

}  // namespace corvane
