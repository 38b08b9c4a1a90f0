// The device menu with wheel, keys and long names. Only an entry chosen from the open menu counts.
#include <QApplication>
#include <QComboBox>
#include <QKeySequence>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;

class DeviceMenuTest : public WindowTest {
 protected:
  void openRunningOnTheSecond() {
    hal.devices = {scriptedDevice(7, "Studio Mix", {18}, {20}), scriptedDevice(9, "Stage Box", {8}, {4}),
                   scriptedDevice(11, "Desk", {1}, {})};
    open();
    moveDeviceChoice(1);
    press("startStopTapped");
    statusTexts();
    hal.takeCalls();
  }

  [[nodiscard]] QComboBox& menu() const { return control<QComboBox>("devicePopup"); }

  /// Turns the wheel over the menu by some notches, as the window system reports it.
  void turnWheelOverTheMenu(int notches) {
    QWindow* const window = view->windowHandle();
    const QPoint point = menu().mapTo(view, menu().rect().center());
    QWheelEvent event(point, view->mapToGlobal(point), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(window, &event);
  }

  /// Gives the focus to the menu, or takes it away.
  void focusMenu(bool focused) {
    if (focused) {
      menu().setFocus();
    } else {
      buttonOf("addConnection").setFocus();
    }
    ASSERT_EQ(menu().hasFocus(), focused);
  }

  void expectNothingChanged(const std::string& by) {
    EXPECT_EQ(menu().currentIndex(), 1) << by;
    EXPECT_EQ(controller->selectedDevice()->id, 9U) << by;
    EXPECT_TRUE(CoreAudioEngine::shared().isRunning()) << by;
    EXPECT_THAT(statusTexts(), IsEmpty()) << by;
    EXPECT_THAT(hal.takeCalls(), IsEmpty()) << by;
  }

  /// Sends a key to the open menu.
  static void menuKey(Qt::Key key) {
    QWidget* const opened = QApplication::activePopupWidget();
    ASSERT_NE(opened, nullptr);
    QTest::keyClick(opened->windowHandle(), key);
    QApplication::processEvents();
  }
};

TEST_F(DeviceMenuTest, TheWheelOverTheClosedMenuChangesNothing) {
  openRunningOnTheSecond();
  for (const bool focused : {false, true}) {
    focusMenu(focused);
    for (const int notches : {1, -1, 3, -3}) {
      turnWheelOverTheMenu(notches);
      expectNothingChanged((focused ? "focused " : "") + std::to_string(notches));
    }
  }
}

TEST_F(DeviceMenuTest, KeysOnTheClosedMenuChangeNothing) {
  openRunningOnTheSecond();
  for (const bool focused : {false, true}) {
    focusMenu(focused);
    for (const Qt::Key each :
         {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_S,
          Qt::Key_D, Qt::Key_1, Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Delete}) {
      key(each);
      expectNothingChanged(QKeySequence(each).toString().toStdString());
      EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    }
  }
}

TEST_F(DeviceMenuTest, TheseKeysOpenIt) {
  openRunningOnTheSecond();
  for (const Qt::Key opener : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
    const std::string name = QKeySequence(opener).toString().toStdString();
    focusMenu(true);
    key(opener);
    EXPECT_NE(QApplication::activePopupWidget(), nullptr) << name;
    expectNothingChanged(name);
    if (QApplication::activePopupWidget() == nullptr) continue;
    menuKey(Qt::Key_Escape);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << name;
    expectNothingChanged(name + ", Escape");
  }
}

TEST_F(DeviceMenuTest, MovingThroughTheOpenedMenuChoosesNothing) {
  openRunningOnTheSecond();
  focusMenu(true);
  key(Qt::Key_Space);
  for (const Qt::Key each : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_D}) menuKey(each);
  turnWheelOverTheMenu(-1);
  expectNothingChanged("moving");
  menuKey(Qt::Key_Escape);
  expectNothingChanged("Escape");
}

TEST_F(DeviceMenuTest, AnEntryOfTheOpenedMenuIsChosen) {
  openRunningOnTheSecond();
  focusMenu(true);
  key(Qt::Key_Down);
  menuKey(Qt::Key_Down);
  menuKey(Qt::Key_Return);
  EXPECT_EQ(menu().currentIndex(), 2);
  EXPECT_EQ(controller->selectedDevice()->id, 11U);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
}

class LongDeviceNameTest : public DeviceMenuTest {
 protected:
  /// Pictures of the closed and of the open menu, with one device.
  std::pair<QImage, QImage> pictures(const std::string& name, UInt32 inputs, UInt32 outputs) {
    hal.devices = {scriptedDevice(7, name, {inputs}, {outputs})};
    if (!controller) openQuietly();
    press("refreshDevices");
    QApplication::processEvents();
    const QImage closed = menu().grab().toImage();
    menu().showPopup();
    QApplication::processEvents();
    QWidget* const opened = QApplication::activePopupWidget();
    EXPECT_NE(opened, nullptr);
    const QImage list = opened == nullptr ? QImage() : opened->grab().toImage();
    menu().hidePopup();
    return {closed, list};
  }

  const std::string longName = std::string(300, 'n');
};

TEST_F(LongDeviceNameTest, GivesWayToTheChannelCounts) {
  const auto first = pictures(longName, 18, 20);
  for (const auto& [inputs, outputs] : {std::pair{19U, 20U}, std::pair{18U, 28U}}) {
    const auto second = pictures(longName, inputs, outputs);
    EXPECT_NE(first.first, second.first) << "closed";
    EXPECT_NE(first.second, second.second) << "open";
  }
}

TEST_F(LongDeviceNameTest, GivesWayInItsMiddle) {
  const auto whole = pictures(longName + longName, 18, 20);
  EXPECT_EQ(whole, pictures(longName + "WWW" + longName, 18, 20));
  EXPECT_EQ(menu().itemText(0).toStdString(), longName + "WWW" + longName + "  (18 in / 20 out)");
  EXPECT_NE(whole.first, pictures("WWW" + longName + longName, 18, 20).first) << "its start stays";
}

}  // namespace
}  // namespace tolvane::test
