// The number of channels of a device in one direction.
#include "engine_fixture.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

class ChannelCountTest : public EngineTest {
 protected:
  static constexpr auto kStreams = kAudioDevicePropertyStreamConfiguration;
  static constexpr auto kInput = kAudioObjectPropertyScopeInput;
};

TEST_F(ChannelCountTest, AddsUpTheStreamsOfTheDirection) {
  EXPECT_EQ(engine_.channelCount(9, true), 10);
  EXPECT_EQ(engine_.channelCount(9, false), 4);
}

TEST_F(ChannelCountTest, AsksForTheSizeThenForTheStreams) {
  (void)engine_.channelCount(9, true);
  EXPECT_THAT(hal_.takeCalls(), ElementsAre("AudioObjectGetPropertyDataSize(9, slay inpt 0)",
                                            "AudioObjectGetPropertyData(9, slay inpt 0, size 40)"));
  (void)engine_.channelCount(9, false);
  EXPECT_THAT(hal_.takeCalls(), ElementsAre("AudioObjectGetPropertyDataSize(9, slay outp 0)",
                                            "AudioObjectGetPropertyData(9, slay outp 0, size 72)"));
}

TEST_F(ChannelCountTest, AsksAnewEveryTime) {
  EXPECT_EQ(engine_.channelCount(9, true), 10);
  hal_.devices[1].inputStreams = {3};
  EXPECT_EQ(engine_.channelCount(9, true), 3);
}

TEST_F(ChannelCountTest, NeedsNoRunningEngineAndChangesNone) {
  startAndForgetCalls(7);
  EXPECT_EQ(engine_.channelCount(9, true), 10);
  EXPECT_TRUE(engine_.isRunning());
  EXPECT_EQ(engine_.currentDeviceID(), 7U);
}

TEST_F(ChannelCountTest, IsZeroForAListOfNoStreams) {
  hal_.devices[0].inputStreams = {};
  EXPECT_EQ(engine_.channelCount(7, true), 0);
  EXPECT_EQ(hal_.calls().back(), "AudioObjectGetPropertyData(7, slay inpt 0, size 8)");
}

TEST_F(ChannelCountTest, IsZeroWhenTheSizeQueryFails) {
  hal_.failProperty(HalCall::getPropertyDataSize, 7, kStreams, kInput, kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(engine_.channelCount(7, true), 0);
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(7, slay inpt 0)"));
  EXPECT_EQ(engine_.channelCount(7, false), 2);
}

TEST_F(ChannelCountTest, IsZeroForSizeZeroWithoutASecondQuery) {
  hal_.reportSize(7, kStreams, kInput, 0);
  EXPECT_EQ(engine_.channelCount(7, true), 0);
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(7, slay inpt 0)"));
}

TEST_F(ChannelCountTest, IsZeroWhenTheDataQueryFails) {
  hal_.failProperty(HalCall::getPropertyData, 7, kStreams, kInput, kAudioHardwareBadObjectError, true);
  EXPECT_EQ(engine_.channelCount(7, true), 0);
}

TEST_F(ChannelCountTest, IsZeroForADeviceThatIsNotThere) {
  EXPECT_EQ(engine_.channelCount(1234, true), 0);
  EXPECT_EQ(engine_.channelCount(kAudioObjectUnknown, false), 0);
}

TEST_F(ChannelCountTest, GoesBeyond32Bits) {
  hal_.devices[0].inputStreams = {0xFFFFFFFF, 0xFFFFFFFF, 2};
  EXPECT_EQ(engine_.channelCount(7, true), 8589934592);
}

TEST_F(ChannelCountTest, ReadsNoBufferBeyondTheBytesItAskedFor) {
  hal_.devices[0].inputStreams = {2, 8, 64};
  hal_.reportSize(7, kStreams, kInput, 8 + 2 * 16);  // a stream was added between the two queries
  EXPECT_EQ(engine_.channelCount(7, true), 10);
  hal_.reportSize(7, kStreams, kInput, 4);  // holds the number of buffers but no buffer
  EXPECT_EQ(engine_.channelCount(7, true), 0);
}

TEST_F(ChannelCountTest, StreamsThatWentBetweenTheQueriesDoNotCount) {
  hal_.reportSize(7, kStreams, kInput, 8 + 5 * 16);
  EXPECT_EQ(engine_.channelCount(7, true), 2);
}

}  // namespace
}  // namespace tolvane::test
