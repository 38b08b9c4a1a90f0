#include <QApplication>
#include <QFileDialog>
#include <QMainWindow>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "app/tolvane_view_controller.h"
#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

class ShellTest : public ::testing::Test {
 protected:
  ShellTest() {
    hal.devices = {scriptedDevice(7, "Studio Mix", {2, 16}, {20})};
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(delegate.applicationShouldTerminateAfterLastWindowClosed());
  }
  ~ShellTest() override { CoreAudioEngine::shared().stop(); }

  /// Runs the event loop as the program does. Returns true if it ended by itself within ten seconds.
  static bool runUntilQuit() {
    bool timedOut = false;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [&timedOut] {
      timedOut = true;
      QApplication::exit(1);
    });
    guard.start(10000);
    return QApplication::exec() == 0 && !timedOut;
  }

  ScriptedHal hal;
  AppDelegate delegate;
};

TEST_F(ShellTest, HasNoWindowBeforeLaunchingHasFinished) {
  EXPECT_EQ(delegate.window(), nullptr);
  EXPECT_EQ(delegate.tolvaneVC(), nullptr);
}

TEST_F(ShellTest, OpensItsWindow) {
  delegate.applicationDidFinishLaunching();
  QMainWindow& window = *delegate.window();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  EXPECT_EQ(window.windowTitle(), "Tolvane");
  EXPECT_EQ(window.size(), QSize(920, 720));
  EXPECT_EQ(window.minimumSize(), QSize(700, 500));
  EXPECT_EQ(window.centralWidget(), delegate.tolvaneVC()->view());
  EXPECT_EQ(window.centralWidget()->size(), QSize(920, 720));
  EXPECT_EQ(window.centralWidget()->pos(), QPoint(0, 0));
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(delegate.tolvaneVC()->devices().size(), 1U);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
}

TEST_F(ShellTest, StandsWhereAWindowOf900By700IsCentred) {
  delegate.applicationDidFinishLaunching();
  const QRect screen = QApplication::primaryScreen()->availableGeometry();
  const QPoint expected(qMax(0, (screen.width() - 900) / 2), qMax(0, (screen.height() - 700) / 2));
  EXPECT_EQ(delegate.window()->pos(), screen.topLeft() + expected);
}

TEST_F(ShellTest, CannotBeSmallerThan700By500) {
  delegate.applicationDidFinishLaunching();
  delegate.window()->resize(300, 200);
  EXPECT_EQ(delegate.window()->size(), QSize(700, 500));
  EXPECT_EQ(delegate.tolvaneVC()->view()->size(), QSize(700, 500));
}

TEST_F(ShellTest, TheContentFillsAWindowOfAnySize) {
  delegate.applicationDidFinishLaunching();
  delegate.window()->resize(1300, 900);
  QApplication::processEvents();
  EXPECT_EQ(delegate.tolvaneVC()->view()->geometry(), QRect(0, 0, 1300, 900));
}

TEST_F(ShellTest, ClosingTheWindowQuits) {
  delegate.applicationDidFinishLaunching();
  QTimer::singleShot(0, [this] { delegate.window()->close(); });
  EXPECT_TRUE(runUntilQuit());
}

TEST_F(ShellTest, ClosingTheWindowQuitsWhileTheEngineRunsAndDoesNotStopIt) {
  delegate.applicationDidFinishLaunching();
  QTimer::singleShot(0, [this] {
    delegate.window()->findChild<QPushButton*>("startStopButton")->click();
    hal.takeCalls();
    delegate.window()->close();
  });
  EXPECT_TRUE(runUntilQuit());
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
  EXPECT_TRUE(hal.calls().empty());
}

TEST_F(ShellTest, ClosingTheWindowQuitsWithAPanelOpen) {
  delegate.applicationDidFinishLaunching();
  QTimer::singleShot(0, [this] {
    delegate.tolvaneVC()->savePatch();
    delegate.window()->close();
  });
  EXPECT_TRUE(runUntilQuit());
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    if (qobject_cast<QFileDialog*>(widget) != nullptr) delete widget;
  }
}

TEST_F(ShellTest, ClosingAPanelDoesNotQuit) {
  delegate.applicationDidFinishLaunching();
  QTimer::singleShot(0, [this] {
    delegate.tolvaneVC()->loadPatch();
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
      if (qobject_cast<QFileDialog*>(widget) != nullptr) widget->close();
    }
    QTimer::singleShot(200, [this] {
      EXPECT_TRUE(delegate.window()->isVisible());
      QApplication::exit(7);
    });
  });
  EXPECT_EQ(QApplication::exec(), 7);
}

}  // namespace
}  // namespace tolvane::test
