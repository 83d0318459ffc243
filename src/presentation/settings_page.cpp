#include <array>

#include "presentation/settings_parts.h"

namespace corvane {
namespace {

struct TabMaker {
  std::string_view key;
  std::string_view title;
  void (*add)(SettingsForm&);
};

void addDeferralsAndTestMode(SettingsForm& form) {
  addDeferralsTab(form);
  if (form.in.admin != nullptr) addAdminTestMode(form);
}

constexpr auto kTabs = std::to_array<TabMaker>({
    {SettingsTabKeys::installomator, toLocalize("Installomator"), addInstallomatorTab},
    {SettingsTabKeys::deferrals, toLocalize("Deferrals"), addDeferralsAndTestMode},
    {SettingsTabKeys::advanced, toLocalize("Advanced"), addAdvancedTab},
    {SettingsTabKeys::about, toLocalize("About"), addAboutTab},
});

void addBanner(SettingsPage& page, const SettingsForm& form) {
  const auto& model = form.in.model;
  page.isManaged = model.hasManagedSettings();
  if (!page.isManaged) return;
  page.bannerTitle = model.isSettingsLocked() ? form.localized("Settings are managed by your organization")
                                              : form.localized("Some settings are managed by your organization");
  const auto name = SupportInfo::of(model.config).name;
  page.bannerCaption = name ? form.texts().localized("Contact {} with questions about configured settings.", *name)
                            : form.localized("Contact your IT department with questions about configured settings.");
}

void addFooter(SettingsPage& page, const SettingsForm& form) {
  const auto& model = form.in.model;
  page.hasEdits = model.hasEdits();
  if (const auto saved = model.lastSavedAt())
    page.savedText = form.texts().localized("Settings saved at {}", form.in.locale.shortTime(*saved));
  else if (page.hasEdits)
    page.savedText = form.localized("There are changes that are not saved yet.");
  page.save = {.text = form.localized("Save"), .help = {}, .visible = true, .enabled = !model.isSettingsLocked()};
}

void addQuestion(SettingsPage& page, const SettingsForm& form) {
  if (!form.in.about.showResetHelperConfirmation) return;
  page.question = {.visible = true,
                   .title = form.localized("Reset Root Helper?"),
                   .text = form.localized(
                       "This will unregister the Corvane root helper and immediately re-register it with the current "
                       "build. macOS may prompt you to approve the helper again in System Settings › Login Items & "
                       "Extensions."),
                   .yes = {.text = form.localized("Reset"), .help = {}, .visible = true, .enabled = true},
                   .no = {.text = form.localized("Cancel"), .help = {}, .visible = true, .enabled = true}};
}

}  // namespace

SettingsPage makeSettingsPage(const SettingsPageInput& input) {
  SettingsForm form(input);
  SettingsPage page;
  page.windowTitle = form.localized("Settings");
  page.pickerTitle = form.localized("Settings Section");
  for (const auto& tab : kTabs) {
    page.tabs.push_back({.key = std::string(tab.key), .title = form.localized(tab.title)});
    if (tab.key == input.window.selectedTab) tab.add(form);
  }
  page.selectedTab = input.window.selectedTab;
  page.sections = form.take();
  addBanner(page, form);
  addFooter(page, form);
  addQuestion(page, form);
  return page;
}

}  // namespace corvane
