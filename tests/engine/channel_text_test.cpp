// The names of a device's channels, as the HAL reports them.
#include <limits>

#include "engine/device_text.h"
#include "engine_fixture.h"

namespace tolvane::test {
namespace {

class ChannelTextTest : public EngineTest {
 protected:
  ChannelTextTest() {
    hal_.devices[0].inputs = {{"Kick", "desk", "out_1"}, {}};
    hal_.devices[0].outputs = {{"Left"}};
  }
  ~ChannelTextTest() override { EXPECT_EQ(liveStringReferences(), 0) << "every text was released, once"; }
};

TEST_F(ChannelTextTest, IsAskedForByScopeAndByElementFromOne) {
  EXPECT_EQ(channelName(7, true, 0), "Kick");
  EXPECT_EQ(channelName(7, false, 0), "Left");
  EXPECT_EQ(channelText(7, true, 0, kTolvaneDevicePropertyChannelPort), "out_1");
  EXPECT_THAT(hal_.calls(), testing::ElementsAre("AudioObjectGetPropertyData(7, lchn inpt 1, size 8)",
                                                 "AudioObjectGetPropertyData(7, lchn outp 1, size 8)",
                                                 "AudioObjectGetPropertyData(7, cprt inpt 1, size 8)"));
}

TEST_F(ChannelTextTest, IsNoneWhereTheHalHasNone) {
  EXPECT_EQ(channelName(7, true, 1), std::nullopt);
  EXPECT_EQ(channelName(7, true, 2), std::nullopt);
  EXPECT_EQ(channelName(99, true, 0), std::nullopt);
}

TEST_F(ChannelTextTest, IsNotAskedForWhereThereIsNoChannel) {
  EXPECT_EQ(channelName(7, true, -1), std::nullopt);
  EXPECT_EQ(channelName(7, true, std::numeric_limits<std::int64_t>::max()), std::nullopt);
  EXPECT_EQ(channelName(7, true, std::numeric_limits<UInt32>::max()), std::nullopt);
  EXPECT_TRUE(hal_.calls().empty());
}

TEST_F(ChannelTextTest, IsReleasedAlsoIfTheQueryFails) {
  hal_.failProperty(HalCall::getPropertyData, 7, kAudioObjectPropertyElementName,
                    kAudioObjectPropertyScopeInput, kAudioHardwareUnspecifiedError, true);
  EXPECT_EQ(channelName(7, true, 0), std::nullopt);
}

}  // namespace
}  // namespace tolvane::test
