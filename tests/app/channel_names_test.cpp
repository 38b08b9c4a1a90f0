// The names of the chosen device's channels, read through the HAL's property, in the window.
#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>
#include <algorithm>

#include "app/window_fixture.h"
#include "matrix/patch_matrix_canvas.h"

namespace tolvane::test {
namespace {

class ChannelNamesInWindow : public WindowTest {
 protected:
  ChannelNamesInWindow() {
    hal.devices[0].inputs = {{"Kick"}, {}, {"capture_AUX2"}};
    hal.devices[0].outputs = {{}, {}, {}, {}, {"playback_FL"}};
    hal.devices.push_back(scriptedDevice(8, "Other", {4}, {6}));
    hal.devices[1].inputs = {{}, {}, {"Flute"}};
  }
  ~ChannelNamesInWindow() override { QToolTip::hideText(); }

  [[nodiscard]] PatchMatrixCanvas& canvas() const {
    return *control<PatchMatrixView>("patchMatrixView").canvas;
  }
  [[nodiscard]] std::string toolTipAt(int row, int column) const {
    const QPoint point(column * 16 + 8, row * 16 + 8);
    QHelpEvent event(QEvent::ToolTip, point, canvas().mapToGlobal(point));
    QApplication::sendEvent(&canvas(), &event);
    return QToolTip::text().toStdString();
  }
  [[nodiscard]] std::string accessibleName(int row, int column) const {
    auto* const table = QAccessible::queryAccessibleInterface(&canvas())->tableInterface();
    return table->cellAt(row, column)->text(QAccessible::Name).toStdString();
  }
};

TEST_F(ChannelNamesInWindow, AreInToolTipsAndAccessibleNames) {
  openQuietly();
  EXPECT_EQ(toolTipAt(2, 4), "In 3 capture_AUX2 → Out 5 playback_FL");
  EXPECT_EQ(toolTipAt(0, 0), "In 1 Kick → Out 1");
  EXPECT_EQ(accessibleName(2, 4), "In 3 capture_AUX2 → Out 5 playback_FL");
  EXPECT_EQ(accessibleName(1, 1), "In 2 → Out 2");
}

TEST_F(ChannelNamesInWindow, AreThoseOfTheChosenDevice) {
  openQuietly();
  moveDeviceChoice(1);
  EXPECT_EQ(toolTipAt(2, 4), "In 3 Flute → Out 5");
  moveDeviceChoice(-1);
  EXPECT_EQ(toolTipAt(2, 4), "In 3 capture_AUX2 → Out 5 playback_FL");
}

TEST_F(ChannelNamesInWindow, AreAskedForOnlyWhenTheyAreShown) {
  openQuietly();
  const auto asked = [this] {
    const auto calls = hal.takeCalls();
    return std::count_if(calls.begin(), calls.end(),
                         [](const std::string& call) { return call.find(", lchn ") != std::string::npos; });
  };
  moveDeviceChoice(1);
  EXPECT_EQ(asked(), 0);
  EXPECT_NE(toolTipAt(2, 4), "");
  EXPECT_EQ(asked(), 2);
  EXPECT_EQ(liveStringReferences(), 0);
}

TEST_F(ChannelNamesInWindow, AreAsTheyAreNow) {
  openQuietly();
  hal.devices[0].inputs[2].name = "Snare";
  EXPECT_EQ(toolTipAt(2, 4), "In 3 Snare → Out 5 playback_FL");
}

}  // namespace
}  // namespace tolvane::test
