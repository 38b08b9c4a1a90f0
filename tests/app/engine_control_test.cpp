// The start/stop button and what it shows about the engine.
#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EngineControlTest : public WindowTest {
 protected:
  [[nodiscard]] std::string buttonTitle() const { return buttonOf("startStopTapped").text().toStdString(); }
  [[nodiscard]] QColor dotColor() const { return control<LayerView>("statusDot").backgroundColor(); }

  const QColor red{204, 51, 51};
  const QColor green{38, 217, 89};
};

TEST_F(EngineControlTest, StandsStoppedAtFirst) {
  openQuietly();
  EXPECT_EQ(buttonTitle(), "▶  Start");
  EXPECT_EQ(dotColor(), red);
  EXPECT_FALSE(CoreAudioEngine::shared().isRunning());
}

TEST_F(EngineControlTest, StartsOnTheSelectedDevice) {
  openQuietly();
  clickCell(2, 3);
  addRoute("1", "2", "0.5");
  deviceCalls();
  statusTexts();
  press("startStopTapped");
  EXPECT_THAT(deviceCalls(), ElementsAre("AudioDeviceCreateIOProcID(7)", "AudioDeviceStart(7, proc 1)"));
  EXPECT_THAT(statusTexts(), ElementsAre("● Running on Studio Mix  •  2 active route(s)"));
  EXPECT_EQ(buttonTitle(), "■  Stop");
  EXPECT_EQ(dotColor(), green);
  const auto entries = publishedEntries();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].src, 2);
  EXPECT_EQ(entries[0].dst, 3);
  EXPECT_EQ(entries[0].gain, 1.0F);
  EXPECT_EQ(entries[1].src, 0);
  EXPECT_EQ(entries[1].dst, 1);
  EXPECT_EQ(entries[1].gain, 0.5F);
}

TEST_F(EngineControlTest, AnEmptyRouteListRuns) {
  openQuietly();
  press("startStopTapped");
  EXPECT_THAT(statusTexts(), ElementsAre("● Running on Studio Mix  •  0 active route(s)"));
  EXPECT_TRUE(CoreAudioEngine::shared().isRunning());
  EXPECT_THAT(publishedEntries(), IsEmpty());
}

TEST_F(EngineControlTest, StopsOnTheSecondPress) {
  openQuietly();
  press("startStopTapped");
  deviceCalls();
  statusTexts();
  press("startStopTapped");
  EXPECT_THAT(deviceCalls(),
              ElementsAre("AudioDeviceStop(7, proc 1)", "AudioDeviceDestroyIOProcID(7, proc 1)"));
  EXPECT_THAT(statusTexts(), ElementsAre("Stopped."));
  EXPECT_EQ(buttonTitle(), "▶  Start");
  EXPECT_EQ(dotColor(), red);
}

TEST_F(EngineControlTest, WithoutADeviceItOnlyWarns) {
  hal.devices.clear();
  openQuietly();
  press("startStopTapped");
  EXPECT_THAT(statusTexts(), ElementsAre("⚠️  Select a device first."));
  EXPECT_THAT(deviceCalls(), IsEmpty());
  EXPECT_EQ(buttonTitle(), "▶  Start");
  EXPECT_EQ(dotColor(), red);
}

TEST_F(EngineControlTest, ARefusedRegistrationIsReported) {
  openQuietly();
  clickCell(1, 1);
  statusTexts();
  hal.answerNext(HalCall::createIOProcID, -66748);
  press("startStopTapped");
  EXPECT_THAT(statusTexts(),
              ElementsAre("❌  AudioDeviceCreateIOProcID failed (-66748).\n"
                          "Grant Microphone access: System Settings → Privacy & Security → Microphone."));
  EXPECT_EQ(buttonTitle(), "▶  Start");
  EXPECT_EQ(dotColor(), red);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(1, 1)));
}

TEST_F(EngineControlTest, ARefusedStartIsReportedAndCanBeTriedAgain) {
  openQuietly();
  hal.answerNext(HalCall::start, -50);
  press("startStopTapped");
  EXPECT_THAT(statusTexts(), ElementsAre("❌  AudioDeviceStart failed (-50).\n"
                                         "Is another app using the device exclusively?"));
  EXPECT_EQ(buttonTitle(), "▶  Start");
  EXPECT_EQ(dotColor(), red);
  press("startStopTapped");
  EXPECT_EQ(buttonTitle(), "■  Stop");
  EXPECT_EQ(dotColor(), green);
}

TEST_F(EngineControlTest, TheDotFollowsTheEngineAndNotTheText) {
  openQuietly();
  press("startStopTapped");
  addRoute("0", "1", "1.0");
  EXPECT_EQ(statusText(), "⚠️  Enter valid channel numbers.");
  EXPECT_EQ(dotColor(), green);
}

TEST_F(EngineControlTest, TheDotIsDrawnRoundInItsColour) {
  openQuietly();
  press("startStopTapped");
  auto& dot = control<LayerView>("statusDot");
  const QImage image = view->grab().toImage();
  const qreal scale = image.devicePixelRatio();
  const auto pixel = [&](double x, double y) {
    return image.pixelColor(((dot.pos() + QPointF(x, y)) * scale).toPoint());
  };
  EXPECT_EQ(pixel(5, 5), green);
  EXPECT_EQ(pixel(2, 5), green);
  EXPECT_EQ(pixel(0.2, 0.2), QColor(20, 20, 20)) << "the corner shows the bar behind";
}

}  // namespace
}  // namespace tolvane::test
