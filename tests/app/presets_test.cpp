#include "app/window_fixture.h"
#include "engine/core_audio_engine.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PresetsTest : public WindowTest {
 protected:
  void openWithOutputs(UInt32 outputs) {
    hal.devices = {scriptedDevice(7, "Box", {2}, {outputs})};
    openQuietly();
  }
};

TEST_F(PresetsTest, LastTwoOutputsOfADevice) {
  openWithOutputs(8);
  clickCell(0, 5);
  statusTexts();
  press("presetStereoToHeadphones");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 6), plainRoute(1, 7)));
  EXPECT_THAT(statusTexts(), ElementsAre("2 connection(s) configured — press Start to route.",
                                         "Preset: Input 1 → Output 7,  Input 2 → Output 8"));
}

TEST_F(PresetsTest, ThreeOutputsGiveTheSecondAndTheThird) {
  openWithOutputs(3);
  press("presetStereoToHeadphones");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 1), plainRoute(1, 2)));
  EXPECT_EQ(statusText(), "Preset: Input 1 → Output 2,  Input 2 → Output 3");
}

TEST_F(PresetsTest, TwoOutputsOrFewerGiveTheFirstTwo) {
  for (const UInt32 outputs : {0U, 1U, 2U}) {
    hal.devices = {scriptedDevice(7, "Box", {2}, {outputs})};
    if (!controller) openQuietly();
    press("refreshDevices");
    press("presetStereoToHeadphones");
    EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(1, 1))) << outputs;
    EXPECT_EQ(statusText(), "Preset: Input 1 → Output 1,  Input 2 → Output 2") << outputs;
  }
}

TEST_F(PresetsTest, NoDeviceCountsAsTwoOutputs) {
  hal.devices.clear();
  openQuietly();
  press("presetStereoToHeadphones");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(1, 1)));
  EXPECT_EQ(statusText(), "Preset: Input 1 → Output 1,  Input 2 → Output 2");
}

TEST_F(PresetsTest, StraightThroughDoesNotLookAtTheDevice) {
  openWithOutputs(8);
  clickCell(0, 5);
  statusTexts();
  press("presetThru12");
  EXPECT_THAT(routes(), ElementsAre(plainRoute(0, 0), plainRoute(1, 1)));
  EXPECT_THAT(statusTexts(), ElementsAre("2 connection(s) configured — press Start to route.",
                                         "Preset: In 1 → Out 1,  In 2 → Out 2"));
}

TEST_F(PresetsTest, LeaveAStoppedEngineAlone) {
  openWithOutputs(8);
  for (const char* const preset : {"presetStereoToHeadphones", "presetThru12"}) {
    press(preset);
    EXPECT_THAT(hal.takeCalls(), IsEmpty()) << preset;
    EXPECT_FALSE(CoreAudioEngine::shared().isRunning()) << preset;
    EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), nullptr) << preset;
  }
}

TEST_F(PresetsTest, DoNotRestartARunningEngine) {
  openWithOutputs(8);
  press("startStopTapped");
  const IOProcContext* const context = CoreAudioEngine::shared().contextPtr();
  hal.takeCalls();
  for (const char* const preset : {"presetStereoToHeadphones", "presetThru12"}) {
    press(preset);
    EXPECT_THAT(hal.takeCalls(), IsEmpty()) << preset;
    EXPECT_EQ(CoreAudioEngine::shared().contextPtr(), context) << preset;
  }
}

TEST_F(PresetsTest, ReachARunningEngine) {
  openWithOutputs(8);
  press("startStopTapped");
  statusTexts();
  press("presetStereoToHeadphones");
  const auto entries = publishedEntries();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].dst, 6);
  EXPECT_EQ(entries[1].dst, 7);
  EXPECT_THAT(statusTexts(),
              ElementsAre("● Live  •  2 route(s) active", "Preset: Input 1 → Output 7,  Input 2 → Output 8"));
  press("presetThru12");
  EXPECT_EQ(publishedEntries()[1].dst, 1);
  EXPECT_THAT(statusTexts(),
              ElementsAre("● Live  •  2 route(s) active", "Preset: In 1 → Out 1,  In 2 → Out 2"));
}

}  // namespace
}  // namespace tolvane::test
