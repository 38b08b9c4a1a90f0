// A session without a screen, for example while the only one is being plugged in.
#include <QApplication>
#include <QMainWindow>
#include <QScreen>

#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "app/palette.h"
#include "app/tolvane_view_controller.h"
#include "support/scripted_hal.h"

namespace tolvane::test {
namespace {

TEST(NoScreen, LaunchingWaitsForOne) {
  ASSERT_EQ(QGuiApplication::primaryScreen(), nullptr) << "the platform is to have none";
  applyLook();
  ScriptedHal hal;
  AppDelegate delegate;
  delegate.applicationDidFinishLaunching();
  QApplication::processEvents();
  EXPECT_EQ(delegate.window(), nullptr);
  EXPECT_EQ(delegate.tolvaneVC(), nullptr);
}

}  // namespace
}  // namespace tolvane::test
