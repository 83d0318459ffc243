#include "presentation/shortcuts_sheet.h"

#include <array>
#include <string_view>

namespace corvane {
namespace {

struct Row {
  std::string_view keys;
  std::string_view text;
};

// In the order in which a person meets them: the window, the list, the settings.
constexpr auto kRows = std::to_array<Row>({
    {"Ctrl+1", toLocalize("Show the status of the applications")},
    {"Ctrl+2", toLocalize("Show the logs")},
    {"F5, Ctrl+R", toLocalize("Check for updates; in the logs, read them again")},
    {"Ctrl+F", toLocalize("Go to the filter; in the logs, search")},
    {"?", toLocalize("Tell why the selected application stands where it does")},
    {"↵", toLocalize("Show or hide the history of the selected application")},
    {"Ctrl+,", toLocalize("Open the settings")},
    {"Ctrl+S", toLocalize("Save the settings")},
    {"Ctrl+Tab", toLocalize("Go to the next section of the settings")},
    {"Esc", toLocalize("Close what floats above the window")},
    {"Ctrl+W", toLocalize("Close the window")},
    {"F1, Ctrl+?", toLocalize("Show these shortcuts")},
});

}  // namespace

ShortcutsSheet makeShortcutsSheet(const PageTexts& texts) {
  ShortcutsSheet sheet{.title = texts.localized("Keyboard Shortcuts"),
                       .lines = {},
                       .close = {.text = texts.localized("Close"), .help = "", .visible = true, .enabled = true}};
  for (const auto& row : kRows) {
    auto text = texts.localized(row.text);
    auto spoken = std::string(row.keys) + ": " + text;
    sheet.lines.push_back({std::string(row.keys), std::move(text), std::move(spoken)});
  }
  return sheet;
}

}  // namespace corvane
