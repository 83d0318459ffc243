// The dashboard's window as a person uses it: clicked, typed at and listened to.
#include "ui/dashboard_window.h"

#include <QAccessible>
#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QtEndian>

#include "base/atomic_file.h"
#include "base/plist.h"
#include "pictures/page_states.h"
#include "pictures/prompt_states.h"
#include "support/temporary_folder.h"
#include "ui/heard_prompt.h"
#include "ui/window_fixture.h"

namespace corvane::ui {
namespace {

void collectButtons(QQuickItem* item, QList<QQuickItem*>& found) {
  if (!item->isVisible()) return;
  if (item->inherits("QQuickAbstractButton")) found.append(item);
  for (auto* child : item->childItems()) collectButtons(child, found);
}

struct DashboardWindowTest : WindowTest {
  DashboardWindowTest() {
    show(ordinaryState());
    open(window_);
  }

  void show(PageState state) {
    state_ = std::move(state);
    bridge_.setPage(state_.page());
    bridge_.setSetupPage(state_.setupPage());
    draw();
  }
  // Of the row with `key`; absent when it is not listed or not in view.
  QQuickItem* inRow(const std::string& key, const char* name) {
    const auto* rows = bridge_.rows();
    for (int i = 0; i < rows->rowCount(); ++i) {
      if (rows->data(rows->index(i, 0), rows->roleNames().key("key")).toString().toStdString() != key) continue;
      QQuickItem* row = nullptr;
      QMetaObject::invokeMethod(item("apps"), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, row), Q_ARG(int, i));
      return row == nullptr ? nullptr : item(name, row);
    }
    return nullptr;
  }
  QQuickWindow* window() final { return window_.window(); }

  PromptBridge prompt_{heardBy(heard_)};
  DashboardBridge bridge_{{.discoverInstalledApps = [this] { heard_ += "discover "; },
                           .checkForUpdates = [this] { heard_ += "check "; },
                           .updateAll = [this] { heard_ += "updateAll "; },
                           .updateApp = [this](const std::string& label) { heard_ += "update:" + label + " "; },
                           .recheck = [this](const std::string& label) { heard_ += "recheck:" + label + " "; },
                           .recheckAll = [this] { heard_ += "recheckAll "; },
                           .toggleHistory = [this](const std::string& label) { heard_ += "history:" + label + " "; },
                           .toggleWhy = [this](const std::string& label) { heard_ += "why:" + label + " "; },
                           .setFilter = [this](const std::string& mode) { heard_ += "filter:" + mode + " "; },
                           .setUpHelper = [this] { heard_ += "setUp "; },
                           .openHelperSettings = [this] { heard_ += "settings "; },
                           .resetHelper = [this] { heard_ += "reset "; },
                           .updateItself = [this] { heard_ += "itself "; },
                           .dismissSelfUpdate = [this] { heard_ += "dismiss "; },
                           .setupStep = [this](const std::string& key) { heard_ += "step:" + key + " "; },
                           .finishSetup = [this] { heard_ += "finish "; },
                           .openSettings = [this] { heard_ += "openSettings "; }},
                          prompt_};
  DashboardWindow window_{bridge_};
  PageState state_;
};

TEST_F(DashboardWindowTest, clicksReachTheActionsOfTheirRows) {
  click(inRow("bramble", "update"));
  EXPECT_EQ(heard(), "update:bramble ");
  click(inRow("cedar", "recheck"));
  EXPECT_EQ(heard(), "recheck:cedar ");
  click(inRow("atlas", "history"));
  EXPECT_EQ(heard(), "history:atlas ");
  EXPECT_EQ(inRow("atlas", "update"), nullptr) << "nothing to update";
  click(item("check"));
  click(item("discover"));
  EXPECT_EQ(heard(), "check discover ");
}

PageState stateNamed(const char* name) {
  const auto states = allPageStates();
  const auto found = std::ranges::find(states, name, &PageState::name);
  return found == states.end() ? PageState() : *found;
}

// Where an item ends, and where the one that is seen next begins.
void expectOneAfterTheOther(QQuickItem* parts, Qt::Orientation along, const std::string& where) {
  ASSERT_NE(parts, nullptr) << where;
  double end = 0;
  for (auto* part : parts->childItems()) {
    if (!part->isVisible()) continue;
    EXPECT_GE(along == Qt::Vertical ? part->y() : part->x(), end) << where;
    end = along == Qt::Vertical ? part->y() + part->height() : part->x() + part->width();
  }
  EXPECT_LE(end, (along == Qt::Vertical ? parts->height() : parts->width()) + 1) << where;
}

TEST_F(DashboardWindowTest, nothingOverlapsAndNoNameIsCutWhereThereIsRoomAtAnySizeOfText) {
  std::erase_if(state_.listed, [](const AppInfo& app) { return app.label != Label("bramble"); });
  show(state_);
  for (const double scale : {1.0, 1.5, 2.0})
    for (const int width : {640, 760, 1080, 1600}) {
      const auto where = std::to_string(scale) + " in " + std::to_string(width);
      DashboardWindow fresh(bridge_);  // what it was before its first frame is seen in that frame alone
      fresh.setAppearance({.reducedMotion = true, .textScale = scale});
      fresh.resize(width, 960);
      fresh.window()->show();
      QCoreApplication::processEvents();
      (void)fresh.grab();
      auto* whole = fresh.window()->contentItem();
      expectOneAfterTheOther(item("statusParts", whole), Qt::Vertical, where);
      auto* row = item("rowParts", whole);
      expectOneAfterTheOther(row, Qt::Horizontal, where);
      EXPECT_FALSE(item("name", row)->property("truncated").toBool()) << where;
    }
}

TEST_F(DashboardWindowTest, whyUnfoldsByPointerAndByKeyAndIsCopiedWhole) {
  click(inRow("bramble", "why"));
  EXPECT_EQ(heard(), "why:bramble ");
  focus(item("apps"));
  press(Qt::Key_Question);
  EXPECT_EQ(heard(), "why:lantern ");

  show(stateNamed("why"));
  click(inRow("bramble", "copyWhy"));
  const auto copied = QGuiApplication::clipboard()->text();
  EXPECT_TRUE(copied.startsWith(QStringLiteral("Bramble (bramble): Pending\n"))) << copied.toStdString();
}

TEST_F(DashboardWindowTest, theWizardStandsInPlaceOfThePageUntilItIsDone) {
  EXPECT_EQ(item("firstRunSetup"), nullptr);
  show(stateNamed("setup-register"));
  EXPECT_EQ(item("apps"), nullptr);
  click(item("step:helper"));
  EXPECT_EQ(heard(), "step:helper ");
  click(item("step:discovery"));
  click(item("finishSetup"));
  EXPECT_EQ(heard(), "") << "neither is open yet";
  click(item("skipSetup"));
  EXPECT_EQ(heard(), "finish ");
  show(stateNamed("setup-slow"));
  click(item("step:installomator"));
  EXPECT_EQ(heard(), "step:installomator ");
  show(stateNamed("setup-done"));
  click(item("finishSetup"));
  EXPECT_EQ(heard(), "finish ");
  show(ordinaryState());
  EXPECT_EQ(item("firstRunSetup"), nullptr);
}

void putIcon(const std::filesystem::path& bundle, const QImage& image) {
  QByteArray picture;
  QBuffer buffer(&picture);
  buffer.open(QIODevice::WriteOnly);
  ASSERT_TRUE(image.save(&buffer, "PNG"));
  const auto entry = [](const char* type, const QByteArray& bytes) {
    const auto length = qToBigEndian(static_cast<quint32>(bytes.size() + 8));
    return type + QByteArray(reinterpret_cast<const char*>(&length), sizeof length) + bytes;
  };
  const auto resources = bundle / "Contents/Resources";
  std::filesystem::create_directories(resources);
  ASSERT_TRUE(writeFileAtomically(resources / "Icon.icns", entry("icns", entry("ic12", picture)).toStdString(), 0644));
  ASSERT_TRUE(writeFileAtomically(bundle / "Contents/Info.plist",
                                  writePlist(PlistDict{{"CFBundleIconFile", "Icon"}}, PlistFormat::xml).value(), 0644));
}

TEST_F(DashboardWindowTest, aRowShowsItsApplicationsIconOrTheFirstLetter) {
  const testing::TemporaryFolder folder;
  QImage blue(64, 64, QImage::Format_RGB32);
  blue.fill(Qt::blue);
  putIcon(folder.path() / "50% off.app", blue);
  putIcon(folder.path() / "Huge.app", QImage(4096, 1, QImage::Format_Mono));
  auto state = ordinaryState();
  state.listed = {outdatedApp("offers", "Offers"), outdatedApp("huge", "Huge"), outdatedApp("gone", "Gone")};
  state.listed[0].appPath = (folder.path() / "50% off.app").string();
  state.listed[1].appPath = (folder.path() / "Huge.app").string();
  state.listed[2].appPath = (folder.path() / "Gone.app").string();
  show(state);
  auto* icon = inRow("offers", "icon");
  ASSERT_NE(icon, nullptr);
  const auto middle = icon->mapToScene(QPointF(icon->width() / 2, icon->height() / 2)).toPoint();
  EXPECT_EQ(window_.grab().pixelColor(middle), QColor(Qt::blue));
  EXPECT_EQ(inRow("offers", "monogram"), nullptr);
  for (const auto* key : {"huge", "gone"}) {
    EXPECT_EQ(inRow(key, "icon"), nullptr) << key;
    EXPECT_NE(inRow(key, "monogram"), nullptr) << key;
  }
}

TEST_F(DashboardWindowTest, aFilterThatNothingPassesLeadsBackToAll) {
  auto state = ordinaryState();
  state.listed.clear();
  state.fields.filterMode = FilterMode::alerts;
  show(state);
  click(item("emptyShowAll"));
  EXPECT_EQ(heard(), "filter:all ");
  EXPECT_EQ(item("emptyCheck"), nullptr);
}

TEST_F(DashboardWindowTest, nothingCanBeStartedWhileARunIsOut) {
  auto state = ordinaryState();
  state.fields.gate = {.isPatching = true, .currentOperation = DiscoveryOperation::patchSingle};
  show(state);
  click(inRow("bramble", "update"));
  click(item("check"));
  press(Qt::Key_F5);
  EXPECT_EQ(heard(), "");
}

TEST_F(DashboardWindowTest, rowsChangeInPlaceAndTheListKeepsItsScrollPlace) {
  auto* list = item("apps");
  list->setProperty("contentY", 150);
  draw();
  const auto before = list->property("contentY");
  auto* row = inRow("harbor", "update");
  ASSERT_NE(row, nullptr);
  for (auto& app : state_.listed)
    if (app.label == Label("harbor")) app.newVersion = "5.3";
  bridge_.setPage(state_.page());
  draw();
  EXPECT_EQ(list->property("contentY"), before);
  EXPECT_EQ(inRow("harbor", "update"), row) << "the same button, so that a focus stays";
}

TEST_F(DashboardWindowTest, theFilterIsChosenByMouseAndByArrows) {
  press(Qt::Key_F, Qt::ControlModifier);
  press(Qt::Key_Right);
  EXPECT_EQ(heard(), "filter:needsUpdate ");
  auto state = ordinaryState();
  state.fields.filterMode = FilterMode::needsUpdate;
  std::erase_if(state.listed, [](const AppInfo& app) { return app.label == Label("atlas"); });
  show(state);
  EXPECT_EQ(inRow("atlas", "history"), nullptr);
  ASSERT_NE(window()->activeFocusItem(), nullptr);
  press(Qt::Key_Right);
  EXPECT_EQ(heard(), "filter:alerts ") << "the focus is still on the filter";
}

TEST_F(DashboardWindowTest, theSettingsOpenByTheirButtonAndTheirShortcut) {
  click(item("openSettings"));
  press(Qt::Key_Comma, Qt::ControlModifier);
  EXPECT_EQ(heard(), "openSettings openSettings ");
}

TEST_F(DashboardWindowTest, shortcutsCheckForUpdates) {
  press(Qt::Key_F5);
  press(Qt::Key_R, Qt::ControlModifier);
  EXPECT_EQ(heard(), "check check ");
}

TEST_F(DashboardWindowTest, theListIsWalkedByTheKeyboard) {
  focus(item("apps"));
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(heard(), "history:bramble ");
  press(Qt::Key_Tab);
  press(Qt::Key_Space);
  EXPECT_EQ(heard(), "update:bramble ") << "Tab goes on into the row's buttons";
}

TEST_F(DashboardWindowTest, bannersAppearWithTheActionThatHelps) {
  EXPECT_EQ(item("helperBanner"), nullptr);
  auto state = ordinaryState();
  state.fields.helper.helperOperational = false;
  state.helperStatus = HelperStatus::notRegistered;
  show(state);
  click(item("setUpHelper"));
  state.helperStatus = HelperStatus::requiresApproval;
  show(state);
  click(item("openHelperSettings"));
  EXPECT_EQ(heard(), "setUp settings ");
  EXPECT_EQ(item("resetHelper"), nullptr);
}

TEST_F(DashboardWindowTest, theHelperIsResetOnlyAfterAYes) {
  auto state = ordinaryState();
  state.fields.helper.helperOperational = false;
  show(state);
  click(item("resetHelper"));
  ASSERT_NE(item("answerYes"), nullptr);
  press(Qt::Key_Escape);
  EXPECT_EQ(item("answerYes"), nullptr);
  click(item("resetHelper"));
  click(item("answerNo"));
  EXPECT_EQ(heard(), "");
  click(item("resetHelper"));
  click(item("answerYes"));
  EXPECT_EQ(heard(), "reset ");
}

TEST_F(DashboardWindowTest, aNewVersionOfTheProgramIsOfferedAndDismissed) {
  auto state = ordinaryState();
  state.fields.selfUpdate.selfUpdateAvailable = SelfUpdateAvailability{.availableVersion = "4.1"};
  show(state);
  EXPECT_EQ(item("updateItself"), nullptr) << "nothing stands behind it";
  state.capabilities = {.updatesItself = true};
  show(state);
  click(item("updateItself"));
  click(item("dismissSelfUpdate"));
  click(item("updateAll"));
  EXPECT_EQ(heard(), "itself dismiss updateAll ");
}

TEST_F(DashboardWindowTest, thePromptStandsInTheWindowThatAskedAndTakesItsAnswers) {
  prompt_.setPage(promptPage(4, DeferralEscalation::normal, DeferralPromptHost::standalone));
  draw();
  EXPECT_EQ(item("install"), nullptr) << "it has a window of its own";
  prompt_.setPage(promptPage(4, DeferralEscalation::normal, DeferralPromptHost::dashboard));
  draw();
  ASSERT_NE(item("promptList"), nullptr);
  EXPECT_FALSE(item("promptList")->property("interactive").toBool());
  click(item("defer"));
  click(item("install"));
  press(Qt::Key_Escape);
  EXPECT_EQ(heard(), "defer install close ");
  click(item("check"));
  EXPECT_EQ(heard(), "") << "the page behind is out of reach";
  auto confirming = promptPage(5, DeferralEscalation::normal, DeferralPromptHost::dashboard);
  EXPECT_TRUE(item("promptList") != nullptr);
  confirming.confirmation = makeConfirmationPage(9, PageTexts{AppDisplayTitle("Corvane")});
  prompt_.setPage(confirming);
  draw();
  EXPECT_EQ(item("install"), nullptr);
  click(item("confirmationNo"));
  press(Qt::Key_Tab);
  click(item("confirmationYes"));
  EXPECT_EQ(heard(), "decline accept ");
  confirming.confirmation = {};
  prompt_.setPage(confirming);
  draw();
  EXPECT_TRUE(item("promptList")->property("interactive").toBool()) << "more than four rows scroll";
}

TEST_F(DashboardWindowTest, inASmallWindowThePromptKeepsItsButtonsWithinIt) {
  window()->resize(640, 480);
  prompt_.setPage(promptPage(6, DeferralEscalation::normal, DeferralPromptHost::dashboard));
  draw();
  auto* button = item("install");
  ASSERT_NE(button, nullptr);
  EXPECT_LE(button->mapToScene(QPointF(0, button->height())).y(), 480);
  EXPECT_TRUE(item("promptList")->property("interactive").toBool());
  click(button);
  EXPECT_EQ(heard(), "install ");
}

TEST_F(DashboardWindowTest, everyButtonHasANameAndAPress) {
  auto state = ordinaryState();
  state.fields.helper.helperOperational = false;
  state.fields.selfUpdate.selfUpdateAvailable = SelfUpdateAvailability{.availableVersion = "4.1"};
  state.capabilities = {.updatesItself = true};
  show(state);
  QList<QQuickItem*> buttons;
  collectButtons(window()->contentItem(), buttons);
  EXPECT_GT(buttons.size(), 15);
  for (auto* button : buttons) {
    auto* spoken = QAccessible::queryAccessibleInterface(button);
    ASSERT_NE(spoken, nullptr);
    EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty()) << button->objectName().toStdString();
  }
  auto* spoken = QAccessible::queryAccessibleInterface(inRow("bramble", "update"));
  EXPECT_EQ(spoken->text(QAccessible::Name).toStdString(), "Update Bramble");
  ASSERT_NE(spoken->actionInterface(), nullptr);
  spoken->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(heard(), "update:bramble ");
}

}  // namespace
}  // namespace corvane::ui
