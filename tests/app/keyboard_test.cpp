// The window without a mouse: the order of the Tab key and the names that a screen reader says.
#include <QAccessible>
#include <QAccessibleInterface>
#include <QApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWindow>
#include <set>

#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;

class KeyboardTest : public WindowTest {
 protected:
  KeyboardTest() { openQuietly(); }

  /// The window's control that has the focus or contains the focused part.
  [[nodiscard]] QWidget* focused() const {
    QWidget* widget = QApplication::focusWidget();
    while (widget != nullptr && widget->parentWidget() != view) widget = widget->parentWidget();
    return widget;
  }
  [[nodiscard]] std::string focusedName() const {
    return focused() == nullptr ? "none" : focused()->objectName().toStdString();
  }
  static std::string accessibleName(QWidget& widget) {
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&widget);
    return accessible == nullptr ? "" : accessible->text(QAccessible::Name).toStdString();
  }
};

TEST_F(KeyboardTest, TabGoesThroughTheControlsAsTheyAreRead) {
  buttonOf("startStopTapped").setFocus();
  std::vector<std::string> order;
  for (int i = 0; i < 15; ++i) {
    order.push_back(focusedName());
    key(Qt::Key_Tab);
  }
  EXPECT_THAT(order, ElementsAre("startStopButton", "devicePopup", "refreshButton", "patchMatrixView",
                                 "connectionsScrollView", "inputChannelField", "outputChannelField",
                                 "gainField", "addButton", "removeButton", "clearButton", "lastOutputsButton",
                                 "thruButton", "saveButton", "loadButton"));
  EXPECT_EQ(focusedName(), "startStopButton") << "and around";
  key(Qt::Key_Backtab);
  EXPECT_EQ(focusedName(), "loadButton");
}

TEST_F(KeyboardTest, SpacePressesAButton) {
  buttonOf("presetThru12").setFocus();
  key(Qt::Key_Space);
  EXPECT_EQ(routes().size(), 2U);
  buttonOf("startStopTapped").setFocus();
  key(Qt::Key_Space);
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
}

TEST_F(KeyboardTest, EnterPressesAButtonAsSpaceDoes) {
  for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
    press("clearConnections");
    buttonOf("presetThru12").setFocus();
    key(enter);
    EXPECT_EQ(routes().size(), 2U) << enter;
  }
  buttonOf("startStopTapped").setFocus();
  key(Qt::Key_Return);
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
  key(Qt::Key_Enter);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
}

TEST_F(KeyboardTest, AHeldKeyPressesAButtonOnce) {
  QPushButton& button = buttonOf("startStopTapped");
  int clicks = 0;
  QObject::connect(&button, &QPushButton::clicked, &button, [&clicks] { ++clicks; });
  for (const Qt::Key held : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
    clicks = 0;
    button.setFocus();
    QTest::keyPress(view->windowHandle(), held);
    for (int i = 0; i < 5; ++i) {
      QKeyEvent again(QEvent::KeyPress, held, Qt::NoModifier, QString(), true);
      QApplication::sendEvent(view->windowHandle(), &again);
    }
    QTest::keyRelease(view->windowHandle(), held);
    EXPECT_EQ(clicks, 1) << held;
  }
}

TEST_F(KeyboardTest, ArrowsSelectARowThatCanBeRemoved) {
  press("presetThru12");
  control<ConnectionsTableView>("connectionsTableView").setFocus();
  key(Qt::Key_Down);
  EXPECT_EQ(control<ConnectionsTableView>("connectionsTableView").selectedRow(), 0);
  buttonOf("removeConnection").setFocus();
  key(Qt::Key_Space);
  EXPECT_EQ(routes().size(), 1U);
}

TEST_F(KeyboardTest, EveryControlHasAName) {
  for (QWidget* const widget : view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    const bool isDecoration =
        qobject_cast<LayerView*>(widget) != nullptr && widget->objectName() != "statusDot";
    if (isDecoration) continue;
    EXPECT_NE(accessibleName(*widget), "") << widget->objectName().toStdString();
  }
}

TEST_F(KeyboardTest, NamesSayWhatATitleDoesNot) {
  EXPECT_EQ(control<QComboBox>("devicePopup").accessibleName(), "Audio device");
  EXPECT_EQ(accessibleName(control<QLineEdit>("inputChannelField")), "Input channel");
  EXPECT_EQ(accessibleName(control<QLineEdit>("outputChannelField")), "Output channel");
  EXPECT_EQ(accessibleName(control<QLineEdit>("gainField")), "Gain, linear");
  EXPECT_EQ(accessibleName(control<ConnectionsTableView>("connectionsTableView")), "Active connections");
  EXPECT_EQ(accessibleName(control<PatchMatrixView>("patchMatrixView")), "Patch matrix");
  EXPECT_EQ(accessibleName(buttonOf("savePatch")), "Save patch");
  EXPECT_EQ(accessibleName(buttonOf("refreshDevices")), "Refresh devices");
}

TEST_F(KeyboardTest, TheDeviceMenuIsLabelledByItsHeading) {
  // On desktops that take the menu's value as its name, the label names the menu.
  const auto labels = QAccessible::queryAccessibleInterface(&control<QComboBox>("devicePopup"))
                          ->relations(QAccessible::Label);
  ASSERT_EQ(labels.size(), 1);
  EXPECT_EQ(labels[0].first->object()->objectName(), "deviceHeading");
}

TEST_F(KeyboardTest, NoTwoButtonsHaveOneName) {
  std::set<std::string> names;
  const auto buttons = view->findChildren<QPushButton*>();
  for (QPushButton* const button : buttons) names.insert(accessibleName(*button));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(buttons.size()));
}

TEST_F(KeyboardTest, TheStartButtonSaysWhatItWillDo) {
  EXPECT_EQ(accessibleName(buttonOf("startStopTapped")), "Start");
  press("startStopTapped");
  EXPECT_EQ(accessibleName(buttonOf("startStopTapped")), "Stop");
  EXPECT_EQ(accessibleName(control<LayerView>("statusDot")), "Engine running");
  press("startStopTapped");
  EXPECT_EQ(accessibleName(buttonOf("startStopTapped")), "Start");
  EXPECT_EQ(accessibleName(control<LayerView>("statusDot")), "Engine stopped");
}

}  // namespace
}  // namespace tolvane::test
