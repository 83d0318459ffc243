// The settings window as values: tabs of sections of controls. A control tells what it is and what it shows; the
// window knows how each kind is drawn, and nothing of what one is about.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "presentation/dashboard_page.h"
#include "presentation/page_fields.h"

namespace corvane {

struct ControlChoice {
  std::string value;
  std::string text;
  friend bool operator==(const ControlChoice&, const ControlChoice&) = default;
};

struct SettingsControl {
  std::string key;  // what the actions are called with; unique on the page
  ControlKind kind = ControlKind::note;
  std::string label;
  std::string value;
  std::string prompt;   // stands in an empty field
  std::string help;     // below it; may have line breaks
  std::string problem;  // what is wrong with the value, below the help; empty when nothing is
  std::string managed;  // the caption beside a lock; empty when nobody else decides
  bool enabled = true;
  std::vector<ControlChoice> choices;
  bool hasOffState = false;  // of a stepper
  bool isOn = true;
  bool mayDecrease = false;
  bool mayIncrease = false;
  bool isRevealed = false;               // of a secret
  std::string revealText;                // "Reveal URL", "Hide URL"; empty: a secret that is never shown
  ColorRole color = ColorRole::primary;  // of a fact's value
  friend bool operator==(const SettingsControl&, const SettingsControl&) = default;
};

struct SettingsSection {
  std::string key;
  std::string title;
  std::string warning;  // stands out below the title
  std::vector<SettingsControl> controls;
  friend bool operator==(const SettingsSection&, const SettingsSection&) = default;
};

struct SettingsTab {
  std::string key;  // "installomator", "deferrals", "advanced", "about"
  std::string title;
  friend bool operator==(const SettingsTab&, const SettingsTab&) = default;
};

// A question over the window, with its two answers.
struct SettingsQuestion {
  bool visible = false;
  std::string title;
  std::string text;
  PageButton yes;
  PageButton no;
  friend bool operator==(const SettingsQuestion&, const SettingsQuestion&) = default;
};

struct SettingsPage {
  std::string windowTitle;
  std::string pickerTitle;  // of the tabs, for those who do not see them
  std::vector<SettingsTab> tabs;
  std::string selectedTab;
  bool isManaged = false;  // the banner stands
  std::string bannerTitle;
  std::string bannerCaption;
  std::vector<SettingsSection> sections;  // of the selected tab
  std::string savedText;                  // "Settings saved at 3:40 PM"; or what there is to save
  bool hasEdits = false;
  PageButton save;
  SettingsQuestion question;
  friend bool operator==(const SettingsPage&, const SettingsPage&) = default;
};

// What the window calls, on the main thread. Keys are those of the controls.
class SettingsActions {
 public:
  virtual ~SettingsActions() = default;
  virtual void selectTab(const std::string& key) = 0;
  virtual void set(const std::string& key, const std::string& value) = 0;  // toggle, picker, fields, disclosure
  virtual void step(const std::string& key, std::int64_t steps) = 0;       // -1 and +1; more while a key is held
  virtual void switchOn(const std::string& key, bool on) = 0;              // a stepper's off state
  virtual void reveal(const std::string& key, bool revealed) = 0;
  virtual void press(const std::string& key) = 0;  // a button
  virtual void answer(bool yes) = 0;
  virtual void save() = 0;
};

template <>
struct PageFields<ControlChoice> {
  static constexpr auto all =
      std::make_tuple(pageField("value", &ControlChoice::value), pageField("text", &ControlChoice::text));
};
template <>
struct PageFields<SettingsControl> {
  using Control = SettingsControl;
  static constexpr auto all = std::make_tuple(
      pageField("key", &Control::key), pageField("kind", &Control::kind), pageField("label", &Control::label),
      pageField("value", &Control::value), pageField("prompt", &Control::prompt), pageField("help", &Control::help),
      pageField("problem", &Control::problem), pageField("managed", &Control::managed),
      pageField("enabled", &Control::enabled), pageField("choices", &Control::choices),
      pageField("hasOffState", &Control::hasOffState), pageField("isOn", &Control::isOn),
      pageField("mayDecrease", &Control::mayDecrease), pageField("mayIncrease", &Control::mayIncrease),
      pageField("isRevealed", &Control::isRevealed), pageField("revealText", &Control::revealText),
      pageField("color", &Control::color));
};
template <>
struct PageFields<SettingsSection> {
  using Section = SettingsSection;
  static constexpr auto all =
      std::make_tuple(pageField("key", &Section::key), pageField("title", &Section::title),
                      pageField("warning", &Section::warning), pageField("controls", &Section::controls));
};
template <>
struct PageFields<SettingsTab> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &SettingsTab::key), pageField("title", &SettingsTab::title));
};
template <>
struct PageFields<SettingsQuestion> {
  using Question = SettingsQuestion;
  static constexpr auto all = std::make_tuple(pageField("visible", &Question::visible),
                                              pageField("title", &Question::title), pageField("text", &Question::text),
                                              pageField("yes", &Question::yes), pageField("no", &Question::no));
};
template <>
struct PageFields<SettingsPage> {
  using Page = SettingsPage;
  static constexpr auto all =
      std::make_tuple(pageField("windowTitle", &Page::windowTitle), pageField("pickerTitle", &Page::pickerTitle),
                      pageField("tabs", &Page::tabs), pageField("selectedTab", &Page::selectedTab),
                      pageField("isManaged", &Page::isManaged), pageField("bannerTitle", &Page::bannerTitle),
                      pageField("bannerCaption", &Page::bannerCaption), pageField("sections", &Page::sections),
                      pageField("savedText", &Page::savedText), pageField("hasEdits", &Page::hasEdits),
                      pageField("save", &Page::save), pageField("question", &Page::question));
};

}  // namespace corvane
