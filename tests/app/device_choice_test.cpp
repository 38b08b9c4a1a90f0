// The device menu: filling it and selecting a device.
#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <QWindow>
#include <utility>

#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DeviceChoiceTest : public WindowTest {
 protected:
  DeviceChoiceTest() {
    hal.devices = {scriptedDevice(7, "Studio Mix", {2, 16}, {20}), scriptedDevice(9, "Stage Box", {8}, {4}),
                   scriptedDevice(11, "Studio Mix", {1}, {})};
  }

  [[nodiscard]] std::vector<std::string> menu() const {
    std::vector<std::string> titles;
    const auto& popup = control<QComboBox>("devicePopup");
    for (int i = 0; i < popup.count(); ++i) titles.push_back(popup.itemText(i).toStdString());
    return titles;
  }
  [[nodiscard]] AudioDeviceID selectedID() const {
    return controller->selectedDevice() ? controller->selectedDevice()->id : kAudioObjectUnknown;
  }
  [[nodiscard]] std::pair<std::int64_t, std::int64_t> grid() const {
    const auto& matrix = control<PatchMatrixView>("patchMatrixView");
    return {matrix.inputCount, matrix.outputCount};
  }
};

TEST_F(DeviceChoiceTest, ListsTheDevicesInTheirOrderAndAdoptsTheFirst) {
  open();
  EXPECT_THAT(menu(), ElementsAre("Studio Mix  (18 in / 20 out)", "Stage Box  (8 in / 4 out)",
                                  "Studio Mix  (1 in / 0 out)"));
  ASSERT_EQ(controller->devices().size(), 3U);
  EXPECT_EQ(controller->devices()[2], (AudioDeviceInfo{11, "Studio Mix", 1, 0}));
  EXPECT_EQ(controller->selectedDevice(), controller->devices()[0]);
  EXPECT_EQ(control<QComboBox>("devicePopup").currentIndex(), 0);
  EXPECT_EQ(text("inputCountLabel"), "Inputs: 18");
  EXPECT_EQ(text("outputCountLabel"), "Outputs: 20");
  EXPECT_EQ(grid(), std::pair(std::int64_t{18}, std::int64_t{20}));
  EXPECT_THAT(statusTexts(), ElementsAre("Device: Studio Mix — configure patch then press Start."));
}

TEST_F(DeviceChoiceTest, AChoiceInTheMenuIsAdopted) {
  openQuietly();
  moveDeviceChoice(1);
  EXPECT_EQ(selectedID(), 9U);
  EXPECT_EQ(text("inputCountLabel"), "Inputs: 8");
  EXPECT_EQ(text("outputCountLabel"), "Outputs: 4");
  EXPECT_EQ(grid(), std::pair(std::int64_t{8}, std::int64_t{4}));
  EXPECT_THAT(statusTexts(), ElementsAre("Device: Stage Box — configure patch then press Start."));
  EXPECT_THAT(hal.takeCalls(), IsEmpty()) << "what is known of the devices is enough";
}

TEST_F(DeviceChoiceTest, TheSameDeviceChosenAgainIsAdoptedAgain) {
  openQuietly();
  press("startStopTapped");
  statusTexts();
  auto& popup = control<QComboBox>("devicePopup");
  clickAt(popup, popup.rect().center());
  QApplication::processEvents();
  QWidget* const list = QApplication::activePopupWidget();
  ASSERT_NE(list, nullptr);
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning()) << "an opened menu has chosen nothing";
  QTest::keyClick(list->windowHandle(), Qt::Key_Return);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
  EXPECT_EQ(statusText(), "Device: Studio Mix — configure patch then press Start.");
}

TEST_F(DeviceChoiceTest, RoutesStayAsTheyAre) {
  openQuietly();
  clickCell(17, 12);
  clickCell(1, 1);
  moveDeviceChoice(1);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(17, 12), plainRoute(1, 1)));
  EXPECT_EQ(control<PatchMatrixView>("patchMatrixView").connections.size(), 2U);
}

TEST_F(DeviceChoiceTest, ChoosingWhileItRunsStopsTheEngine) {
  openQuietly();
  clickCell(0, 0);
  press("startStopTapped");
  deviceCalls();
  statusTexts();
  moveDeviceChoice(1);
  EXPECT_THAT(deviceCalls(),
              ElementsAre("AudioDeviceStop(7, proc 1)", "AudioDeviceDestroyIOProcID(7, proc 1)"));
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
  EXPECT_EQ(buttonOf("startStopTapped").text(), "▶  Start");
  EXPECT_THAT(statusTexts(), ElementsAre("Device: Stage Box — configure patch then press Start."));
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0)));
  press("startStopTapped");
  EXPECT_EQ(CoreAudioEngine::shared().currentDeviceID(), 9U);
}

TEST_F(DeviceChoiceTest, ReloadingAdoptsTheFirstAgain) {
  openQuietly();
  moveDeviceChoice(1);
  hal.devices.push_back(scriptedDevice(13, "New", {4}, {4}));
  press("refreshDevices");
  EXPECT_EQ(menu().size(), 4U);
  EXPECT_EQ(selectedID(), 7U);
  EXPECT_EQ(control<QComboBox>("devicePopup").currentIndex(), 0);
  EXPECT_EQ(text("inputCountLabel"), "Inputs: 18");
}

TEST_F(DeviceChoiceTest, ReloadingStopsTheEngine) {
  openQuietly();
  press("startStopTapped");
  deviceCalls();
  press("refreshDevices");
  EXPECT_THAT(deviceCalls(),
              ElementsAre("AudioDeviceStop(7, proc 1)", "AudioDeviceDestroyIOProcID(7, proc 1)"));
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
  EXPECT_EQ(buttonOf("startStopTapped").text(), "▶  Start");
}

TEST_F(DeviceChoiceTest, AnEmptyReloadLeavesTheOldDevice) {
  openQuietly();
  moveDeviceChoice(1);
  statusTexts();
  hal.devices.clear();
  press("refreshDevices");
  EXPECT_THAT(controller->devices(), IsEmpty());
  EXPECT_THAT(menu(), IsEmpty());
  EXPECT_EQ(selectedID(), 9U);
  EXPECT_EQ(text("inputCountLabel"), "Inputs: 8");
  EXPECT_EQ(grid(), std::pair(std::int64_t{8}, std::int64_t{4}));
  EXPECT_THAT(statusTexts(), IsEmpty());
  deviceCalls();
  press("startStopTapped");
  EXPECT_EQ(deviceCalls().front(), "AudioDeviceCreateIOProcID(9)");
}

TEST_F(DeviceChoiceTest, WithoutAnyDeviceNothingIsAdopted) {
  hal.devices.clear();
  open();
  EXPECT_EQ(controller->selectedDevice(), std::nullopt);
  EXPECT_EQ(text("inputCountLabel"), "Inputs: —");
  EXPECT_EQ(text("outputCountLabel"), "Outputs: —");
  EXPECT_THAT(statusTexts(), IsEmpty());
  EXPECT_EQ(text("statusLabel"), "Ready — select a device and press Start.");
}

TEST_F(DeviceChoiceTest, NamesAreShownAsTheyAre) {
  hal.devices = {scriptedDevice(7, "<b>Bold</b> & %1 %2 ünï", {1}, {2})};
  open();
  EXPECT_THAT(menu(), ElementsAre("<b>Bold</b> & %1 %2 ünï  (1 in / 2 out)"));
  EXPECT_EQ(statusText(), "Device: <b>Bold</b> & %1 %2 ünï — configure patch then press Start.");
  EXPECT_EQ(control<QLabel>("statusLabel").textFormat(), Qt::PlainText);
}

}  // namespace
}  // namespace tolvane::test
