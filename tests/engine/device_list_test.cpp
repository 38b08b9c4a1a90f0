// The list of devices: its content, its order, and the effect of a failing query.
#include "engine_fixture.h"
#include "support/captured_output.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DeviceListTest : public EngineTest {
 protected:
  static constexpr auto kSystem = kAudioObjectSystemObject;
  static constexpr auto kList = kAudioHardwarePropertyDevices;
  static constexpr auto kName = kAudioObjectPropertyName;
  static constexpr auto kGlobal = kAudioObjectPropertyScopeGlobal;

  ~DeviceListTest() override { EXPECT_EQ(liveStringReferences(), 0) << "every name was released, once"; }

  const AudioDeviceInfo kSeven{7, "Seven", 2, 2};
  const AudioDeviceInfo kNine{9, "Nine", 10, 4};
};

TEST_F(DeviceListTest, HasIdentifierNameAndChannels) {
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kSeven, kNine));
}

TEST_F(DeviceListTest, AsksNameInputsOutputsOfEachInTurn) {
  (void)engine_.getAllDevices();
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(1, dev# glob 0)",       //
                                        "AudioObjectGetPropertyData(1, dev# glob 0, size 8)",   //
                                        "AudioObjectGetPropertyData(7, lnam glob 0, size 8)",   //
                                        "AudioObjectGetPropertyDataSize(7, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(7, slay inpt 0, size 24)",  //
                                        "AudioObjectGetPropertyDataSize(7, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(7, slay outp 0, size 24)",  //
                                        "AudioObjectGetPropertyData(9, lnam glob 0, size 8)",   //
                                        "AudioObjectGetPropertyDataSize(9, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(9, slay inpt 0, size 40)",  //
                                        "AudioObjectGetPropertyDataSize(9, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(9, slay outp 0, size 72)"));
}

TEST_F(DeviceListTest, PrintsNothing) {
  hal_.devices[0].name.reset();
  EXPECT_THAT(outputLinesOf([this] { (void)engine_.getAllDevices(); }), IsEmpty());
}

TEST_F(DeviceListTest, IsEmptyForSizeZeroWithoutASecondQuery) {
  hal_.devices.clear();
  EXPECT_THAT(engine_.getAllDevices(), IsEmpty());
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(1, dev# glob 0)"));
}

TEST_F(DeviceListTest, IsEmptyWhenTheSizeQueryFails) {
  hal_.failProperty(HalCall::getPropertyDataSize, kSystem, kList, kGlobal, -1);
  EXPECT_THAT(engine_.getAllDevices(), IsEmpty());
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(1, dev# glob 0)"));
}

TEST_F(DeviceListTest, IsEmptyWhenTheDataQueryFails) {
  hal_.failProperty(HalCall::getPropertyData, kSystem, kList, kGlobal, -1, true);
  EXPECT_THAT(engine_.getAllDevices(), IsEmpty());
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(1, dev# glob 0)",
                                        "AudioObjectGetPropertyData(1, dev# glob 0, size 8)"));
}

TEST_F(DeviceListTest, ThatShrinksBetweenTheQueriesLosesOnlyWhatWent) {
  hal_.onCall = [this](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(1,")) hal_.devices.pop_back();
  };
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kSeven));
  EXPECT_EQ(hal_.calls().back(), "AudioObjectGetPropertyData(0, lnam glob 0, size 8)")
      << "the entry that was not written stays 0, which is no device";
}

TEST_F(DeviceListTest, ThatGrowsBetweenTheQueriesIsCutToTheFirstSize) {
  hal_.onCall = [this](const std::string& call) {
    if (!call.starts_with("AudioObjectGetPropertyData(1,")) return;
    hal_.devices.push_back({.id = 11, .name = "Late", .inputStreams = {1}});
  };
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kSeven, kNine));
}

TEST_F(DeviceListTest, SizeThatIsNoWholeNumberOfIdentifiersIsRoundedDown) {
  hal_.reportSize(kSystem, kList, kGlobal, 7);
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kSeven));
  hal_.reportSize(kSystem, kList, kGlobal, 3);
  EXPECT_THAT(engine_.getAllDevices(), IsEmpty());
}

TEST_F(DeviceListTest, LeavesOutADeviceWhoseNameQueryFails) {
  hal_.failProperty(HalCall::getPropertyData, 7, kName, kGlobal, kAudioHardwareUnspecifiedError);
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
}

TEST_F(DeviceListTest, ReleasesANameThatCameWithAFailingStatus) {
  hal_.failProperty(HalCall::getPropertyData, 7, kName, kGlobal, kAudioHardwareUnspecifiedError, true);
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
  EXPECT_EQ(liveStringReferences(), 0);
}

TEST_F(DeviceListTest, LeavesOutADeviceWithoutAName) {
  hal_.devices[0].name.reset();
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
}

TEST_F(DeviceListTest, AsksNoChannelsOfADeviceWithoutAName) {
  hal_.devices.pop_back();
  hal_.devices[0].name.reset();
  (void)engine_.getAllDevices();
  EXPECT_EQ(hal_.calls().back(), "AudioObjectGetPropertyData(7, lnam glob 0, size 8)");
}

TEST_F(DeviceListTest, KeepsADeviceWithAnEmptyName) {
  hal_.devices[0].name = "";
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(AudioDeviceInfo{7, "", 2, 2}, kNine));
}

TEST_F(DeviceListTest, KeepsNamesBeyondAsciiAsTheyAre) {
  hal_.devices[0].name = "Größe 音 🎛️";
  EXPECT_EQ(engine_.getAllDevices().at(0).name, "Größe 音 🎛️");
}

TEST_F(DeviceListTest, KeepsLongNamesWhole) {
  hal_.devices[0].name = std::string(10000, 'x');
  EXPECT_EQ(engine_.getAllDevices().at(0).name, std::string(10000, 'x'));
}

TEST_F(DeviceListTest, LeavesOutADeviceWithoutChannels) {
  hal_.devices[0].inputStreams = {};
  hal_.devices[0].outputStreams = {0, 0};
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
}

TEST_F(DeviceListTest, LeavesOutADeviceWhoseBothChannelQueriesFail) {
  for (const auto scope : {kAudioObjectPropertyScopeInput, kAudioObjectPropertyScopeOutput}) {
    hal_.failProperty(HalCall::getPropertyDataSize, 7, kAudioDevicePropertyStreamConfiguration, scope, -1);
  }
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
}

TEST_F(DeviceListTest, CountsAFailingDirectionAsNone) {
  hal_.failProperty(HalCall::getPropertyData, 7, kAudioDevicePropertyStreamConfiguration,
                    kAudioObjectPropertyScopeOutput, -1);
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(AudioDeviceInfo{7, "Seven", 2, 0}, kNine));
}

TEST_F(DeviceListTest, KeepsDevicesOfOneDirection) {
  hal_.devices[0].outputStreams = {};
  hal_.devices[1].inputStreams = {};
  EXPECT_THAT(engine_.getAllDevices(),
              ElementsAre(AudioDeviceInfo{7, "Seven", 2, 0}, AudioDeviceInfo{9, "Nine", 0, 4}));
}

TEST_F(DeviceListTest, KeepsEqualNamesInTheHalsOrder) {
  hal_.devices = {{.id = 30, .name = "Card", .inputStreams = {1}},
                  {.id = 10, .name = "Other", .inputStreams = {1}},
                  {.id = 20, .name = "Card", .outputStreams = {2}}};
  EXPECT_THAT(engine_.getAllDevices(),
              ElementsAre(AudioDeviceInfo{30, "Card", 1, 0}, AudioDeviceInfo{10, "Other", 1, 0},
                          AudioDeviceInfo{20, "Card", 0, 2}));
}

TEST_F(DeviceListTest, ReadsTheHalAnewEveryTime) {
  (void)engine_.getAllDevices();
  hal_.devices.erase(hal_.devices.begin());
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kNine));
}

TEST_F(DeviceListTest, MayBeAskedForWhileTheEngineRuns) {
  startAndForgetCalls(7);
  EXPECT_THAT(engine_.getAllDevices(), ElementsAre(kSeven, kNine));
  EXPECT_TRUE(engine_.isRunning());
}

}  // namespace
}  // namespace tolvane::test
