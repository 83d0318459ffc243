// The settings window as a person uses it, over a page with a control of each kind.
#include "ui/settings_window.h"

#include <QAccessible>
#include <set>

#include "pictures/prompt_states.h"
#include "pictures/settings_states.h"
#include "ui/heard_prompt.h"
#include "ui/window_fixture.h"

namespace corvane::ui {
namespace {

struct HeardSettings final : SettingsActions {
  explicit HeardSettings(std::string& heard) : heard(heard) {}
  std::string& heard;
  void tell(const std::string& what) { heard += what + " "; }

  void selectTab(const std::string& key) override { tell("tab:" + key); }
  void set(const std::string& key, const std::string& value) override { tell(key + "=" + value); }
  void step(const std::string& key, std::int64_t steps) override { tell(key + "+" + std::to_string(steps)); }
  void switchOn(const std::string& key, bool on) override { tell(key + (on ? ":on" : ":off")); }
  void reveal(const std::string& key, bool revealed) override { tell(key + (revealed ? ":shown" : ":hidden")); }
  void press(const std::string& key) override { tell("press:" + key); }
  void answer(bool yes) override { tell(yes ? "yes" : "no"); }
  void save() override { tell("save"); }
};

struct SettingsWindowTest : WindowTest {
  SettingsWindowTest() { open(window_); }

  void show() {
    bridge_.setPage(page_);
    draw();
  }
  // What is typed into or pressed of the control with `key`.
  QQuickItem* control(const std::string& key) {
    auto* loader = item("control:" + key);
    if (loader == nullptr) return nullptr;
    auto* made = loader->property("item").value<QQuickItem*>();
    if (made->activeFocusOnTab() || made->inherits("QQuickTextInput") || made->inherits("QQuickTextEdit")) return made;
    for (auto* child : made->childItems())
      if (child->activeFocusOnTab() && child->isVisible()) return child;
    return made;
  }
  void type(const char* text) {
    for (const char* letter = text; *letter != '\0'; ++letter) QTest::keyClick(window(), *letter);
  }
  SettingsControl& shown(const std::string& key) {
    for (auto& section : page_.sections)
      for (auto& one : section.controls)
        if (one.key == key) return one;
    ADD_FAILURE() << key;
    return page_.sections.front().controls.front();
  }
  QQuickWindow* window() final { return window_.window(); }

  HeardSettings actions_{heard_};
  std::string promptHeard_;
  PromptBridge prompt_{heardBy(promptHeard_)};
  SettingsBridge bridge_{actions_, prompt_};
  SettingsPage page_ = everyKindOfControl();
  SettingsWindow window_{(bridge_.setPage(page_), bridge_)};
};

TEST_F(SettingsWindowTest, eachKindIsWorkedByTheMouse) {
  window()->resize(720, 2300);
  draw();
  click(control("reopen"));
  click(control("force"));
  EXPECT_EQ(heard(), "reopen=false force=true ");
  click(item("more:count"));
  click(item("less:delay"));
  click(item("off:count"));
  click(item("off:days"));
  click(item("more:days"));
  EXPECT_EQ(heard(), "count+1 count:off days:on ") << "a limit, and a value that is off, take no steps";
  click(item("reveal:webhook"));
  EXPECT_EQ(item("reveal:token"), nullptr) << "a secret that is never shown";
  click(control("open"));
  click(control("project"));
  click(control("advanced"));
  EXPECT_EQ(heard(), "webhook:shown press:open press:project advanced=true ");
}

TEST_F(SettingsWindowTest, aPickerIsChosenFromByTheKeyboardAndShowsAValueThatIsNoneOfItsOwn) {
  EXPECT_EQ(control("action")->property("displayText").toString(), "prompt_user_loop");
  focus(control("notify"));
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(heard(), "notify=all ");
  EXPECT_EQ(control("notify")->property("displayText").toString(), "Success only") << "until the page says so";
  shown("notify").value = "all";
  show();
  EXPECT_EQ(control("notify")->property("displayText").toString(), "All");
}

TEST_F(SettingsWindowTest, aStepperStepsByKeysWiderWhileOneIsHeld) {
  focus(control("count"));
  press(Qt::Key_Tab);
  press(Qt::Key_Up);
  press(Qt::Key_Left);
  press(Qt::Key_PageUp);
  EXPECT_EQ(heard(), "count+1 count+-1 count+10 ");
  for (int i = 0; i < 14; ++i) {
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Up, {}, {}, true);
    QCoreApplication::sendEvent(window(), &held);
  }
  EXPECT_THAT(heard(), ::testing::EndsWith("count+1 count+5 count+5 count+5 "));
}

TEST_F(SettingsWindowTest, whatIsTypedStaysWhileTheAnswersComeLate) {
  auto* field = control("proxy");
  focus(field);
  type("abc");
  press(Qt::Key_Left);
  EXPECT_EQ(heard(), "proxy=a proxy=ab proxy=abc ");
  for (const char* answer : {"a", "ab", "abc"}) {
    shown("proxy").value = answer;
    show();
    EXPECT_EQ(field->property("text").toString(), "abc");
    EXPECT_EQ(field->property("cursorPosition").toInt(), 2);
  }
  shown("proxy").value = "from elsewhere";
  show();
  EXPECT_EQ(field->property("text").toString(), "from elsewhere");
  EXPECT_TRUE(field->hasActiveFocus());
  type("x");
  press(Qt::Key_Tab);
  EXPECT_EQ(field->property("text").toString(), "from elsewhere") << "the page took no notice";
  focus(field);
  type("y");
  shown("proxy").problem = "No such proxy.";
  show();
  press(Qt::Key_Tab);
  EXPECT_NE(field->property("text").toString(), "from elsewhere") << "told to be wrong, but not lost";
}

TEST_F(SettingsWindowTest, controlsChangeInPlaceAndTheFormKeepsItsPlace) {
  auto* form = item("form");
  focus(control("paths"));
  const auto place = form->property("contentY");
  EXPECT_GT(place.toDouble(), 0);
  auto* field = control("paths");
  shown("paths").value = "/Volumes/Other";
  page_.savedText = "Edited";
  page_.hasEdits = true;
  show();
  EXPECT_EQ(control("paths"), field);
  EXPECT_TRUE(field->hasActiveFocus());
  EXPECT_EQ(field->property("text").toString(), "/Volumes/Other");
  EXPECT_EQ(form->property("contentY"), place);

  auto added = shown("proxy");
  added.key = "another";
  page_.sections[2].controls.insert(page_.sections[2].controls.begin() + 1, added);
  std::erase_if(page_.sections, [](const SettingsSection& section) { return section.key == "steppers"; });
  show();
  EXPECT_EQ(control("paths"), field) << "the same field, wherever it moved";
  EXPECT_NE(control("another"), nullptr);
  EXPECT_EQ(item("control:count"), nullptr);
  EXPECT_EQ(bridge_.controls("steppers"), nullptr);

  page_.selectedTab = "about";
  page_.sections = {everyKindOfControl().sections[3]};
  show();
  EXPECT_EQ(form->property("contentY").toInt(), 0) << "another tab begins at its top";
}

TEST_F(SettingsWindowTest, timesAndDatesTurnUnderTheCursor) {
  const auto turned = [&](const char* key, int cursor, Qt::Key turn) {
    focus(control(key));
    control(key)->setProperty("cursorPosition", cursor);
    press(turn);
    return heard();
  };
  EXPECT_EQ(turned("start", 1, Qt::Key_Up), "start=10:00 ");
  EXPECT_EQ(turned("start", 5, Qt::Key_Down), "start=10:59 ");
  shown("date").value = "2026-02-28 23:59";
  show();
  EXPECT_EQ(turned("date", 9, Qt::Key_Up), "date=2026-02-01 23:59 ");
}

TEST_F(SettingsWindowTest, returnAndItsShortcutSaveButNotInSeveralLines) {
  focus(control("proxy"));
  press(Qt::Key_Return);
  focus(control("reopen"));
  press(Qt::Key_Return);
  focus(control("paths"));
  press(Qt::Key_S, Qt::ControlModifier);
  EXPECT_EQ(heard(), "save save save ");
  press(Qt::Key_Return);
  EXPECT_THAT(heard(), ::testing::HasSubstr("\n"));
  click(item("save"));
  EXPECT_EQ(heard(), "save ");
  page_.save.enabled = false;
  show();
  press(Qt::Key_S, Qt::ControlModifier);
  click(item("save"));
  EXPECT_EQ(heard(), "") << "locked";
}

TEST_F(SettingsWindowTest, tabsAreChosenByArrowsAndByTheirShortcutFromAnywhere) {
  press(Qt::Key_Right);
  page_.selectedTab = "deferrals";
  show();
  press(Qt::Key_Right);
  press(Qt::Key_Tab, Qt::ControlModifier);
  press(Qt::Key_PageUp, Qt::ControlModifier);
  EXPECT_EQ(heard(), "tab:deferrals tab:advanced tab:advanced tab:installomator ");
}

TEST_F(SettingsWindowTest, aQuestionKeepsTheFormOutOfReachUntilItsAnswer) {
  page_.question = {.visible = true,
                    .title = "Reset Root Helper?",
                    .text = "Sure?",
                    .yes = {.text = "Reset", .visible = true, .enabled = true},
                    .no = {.text = "Cancel", .visible = true, .enabled = true}};
  show();
  click(control("reopen"));
  EXPECT_EQ(heard(), "");
  press(Qt::Key_Escape);
  EXPECT_EQ(heard(), "no ");
  EXPECT_TRUE(window()->isVisible()) << "only what floats";
  click(item("answerYes"));
  EXPECT_EQ(heard(), "yes ");
  page_.question.visible = false;
  show();
  EXPECT_EQ(item("answerYes"), nullptr);
}

TEST_F(SettingsWindowTest, thePromptStandsHereWhenItWasAskedForHere) {
  prompt_.setPage(promptPage(2, DeferralEscalation::normal, DeferralPromptHost::dashboard));
  draw();
  EXPECT_EQ(item("install"), nullptr);
  prompt_.setPage(promptPage(2, DeferralEscalation::normal, DeferralPromptHost::settings));
  draw();
  click(item("install"));
  press(Qt::Key_Escape);
  EXPECT_EQ(promptHeard_, "install close ");
  EXPECT_TRUE(window()->isVisible());
}

TEST_F(SettingsWindowTest, escapeClosesItAndIsTold) {
  int closed = 0;
  QObject::connect(&window_, &SettingsWindow::closed, [&closed] { ++closed; });
  press(Qt::Key_Escape);
  EXPECT_FALSE(window()->isVisible());
  EXPECT_EQ(closed, 1);
}

TEST_F(SettingsWindowTest, whoseControlsAreDecidedElsewhereSaysSo) {
  EXPECT_EQ(item("managedBanner"), nullptr);
  page_.isManaged = true;
  page_.bannerTitle = "Some settings are managed by your organization";
  for (const auto* key : {"reopen", "count", "webhook"}) {
    shown(key).enabled = false;
    shown(key).managed = "Provided by your organization through managed configuration.";
  }
  show();
  EXPECT_NE(item("managedBanner"), nullptr);
  EXPECT_NE(item("managed:reopen"), nullptr);
  EXPECT_EQ(item("managed:force"), nullptr);
  window()->resize(720, 2300);
  draw();
  click(control("reopen"));
  click(item("more:count"));
  click(item("off:count"));
  EXPECT_EQ(heard(), "");
  click(item("reveal:webhook"));
  EXPECT_EQ(heard(), "webhook:shown ") << "what may not be changed may still be read";
}

// Tab alone reaches every control from the top to the bottom, each is in view when it has the keyboard, and each tells
// those who do not see it what it is.
TEST_F(SettingsWindowTest, theKeyboardAloneReachesEverythingInReadingOrderAndInView) {
  std::set<QQuickItem*> seen;
  double last = -1;
  auto* form = item("form");
  for (;;) {
    auto* now = window()->activeFocusItem();
    ASSERT_NE(now, nullptr);
    if (!seen.insert(now).second) break;
    auto* spoken = QAccessible::queryAccessibleInterface(now);
    ASSERT_NE(spoken, nullptr);
    const auto said = spoken->state().passwordEdit ? QAccessible::Description : QAccessible::Name;
    const auto name = spoken->text(said).toStdString();
    EXPECT_FALSE(name.empty()) << now->metaObject()->className();
    EXPECT_NE(spoken->role(), QAccessible::NoRole) << name;
    EXPECT_NE(spoken->role(), QAccessible::Client) << name;
    if (form->isAncestorOf(now)) {
      const auto top = now->mapToItem(form, QPointF(0, 0)).y();
      EXPECT_GE(top, 0) << name;
      EXPECT_LE(top + now->height(), form->height() + 1) << name;
      const auto place = now->mapToItem(form->property("contentItem").value<QQuickItem*>(), QPointF(0, 0)).y();
      EXPECT_GE(place, last - 40) << name << " is not in reading order";
      last = std::max(last, place);
    }
    press(Qt::Key_Tab);
  }
  for (const auto& section : page_.sections)
    for (const auto& one : section.controls) {
      if (one.kind == ControlKind::note || !one.enabled) continue;
      auto* loader = item("control:" + one.key);
      ASSERT_NE(loader, nullptr) << one.key;
      const auto within = [&](QQuickItem* had) { return loader->isAncestorOf(had); };
      EXPECT_TRUE(std::ranges::any_of(seen, within)) << one.key << " cannot be reached by Tab";
    }
  EXPECT_TRUE(seen.contains(item("save")));
}

TEST_F(SettingsWindowTest, controlsCanBePressedAndSteppedThroughTheAccessibilityTree) {
  const auto act = [&](QQuickItem* target, const QString& action) {
    auto* spoken = QAccessible::queryAccessibleInterface(target);
    ASSERT_NE(spoken, nullptr);
    ASSERT_NE(spoken->actionInterface(), nullptr);
    spoken->actionInterface()->doAction(action);
  };
  act(control("reopen"), QAccessibleActionInterface::toggleAction());
  act(control("advanced"), QAccessibleActionInterface::pressAction());
  act(control("reset"), QAccessibleActionInterface::pressAction());
  act(control("project"), QAccessibleActionInterface::pressAction());
  act(control("delay"), QAccessibleActionInterface::increaseAction());
  EXPECT_EQ(heard(), "reopen=false advanced=true press:reset press:project delay+1 ");
  auto* secret = QAccessible::queryAccessibleInterface(control("webhook"));
  ASSERT_NE(secret, nullptr);
  EXPECT_TRUE(secret->state().passwordEdit);
  auto* fact = QAccessible::queryAccessibleInterface(control("operational"));
  EXPECT_EQ(fact->text(QAccessible::Name).toStdString(), "Operational: No");
}

TEST_F(SettingsWindowTest, aFactTooLongForItsSideTakesTheWholeRowBelowItsLabel) {
  shown("version").value = "workplace-service-desk.regional-infrastructure@updates.example-foundation.org";
  show();
  auto* fact = item("control:version");
  EXPECT_EQ(fact->x(), 0);
  EXPECT_EQ(fact->width(), fact->parentItem()->width());
}

TEST_F(SettingsWindowTest, nothingIsWiderThanItsCardAtAnySizeOfText) {
  for (const double scale : {1.0, 1.5, 2.0}) {
    window_.setAppearance({.reducedMotion = true, .textScale = scale});
    window()->resize(560, 900);
    draw();
    auto* form = item("form");
    for (const auto& section : page_.sections)
      for (const auto& one : section.controls) {
        auto* loader = item("control:" + one.key);
        if (loader == nullptr || one.kind == ControlKind::note) continue;
        auto* made = loader->property("item").value<QQuickItem*>();
        const auto left = made->mapToItem(form, QPointF(0, 0)).x();
        EXPECT_GE(left, 0) << one.key << " at " << scale;
        EXPECT_LE(left + made->width(), form->width()) << one.key << " at " << scale;
        EXPECT_GE(made->height() + 1, made->implicitHeight()) << one.key << " at " << scale;
      }
  }
}

}  // namespace
}  // namespace corvane::ui
