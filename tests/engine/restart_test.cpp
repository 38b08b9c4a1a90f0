// Starting while running: first the engine ends the old run, on the old run's device.
#include "engine_fixture.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using Case = EngineError::Case;

using RestartTest = EngineTest;

TEST_F(RestartTest, OnTheSameDeviceStopsFirst) {
  startAndForgetCalls(7);
  EXPECT_EQ(engine_.start(7, {}), std::nullopt);
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioDeviceStop(7, proc 1)",                           //
                                        "AudioDeviceDestroyIOProcID(7, proc 1)",                //
                                        "AudioObjectGetPropertyDataSize(7, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(7, slay inpt 0, size 24)",  //
                                        "AudioObjectGetPropertyDataSize(7, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(7, slay outp 0, size 24)",  //
                                        "AudioDeviceCreateIOProcID(7)",                         //
                                        "AudioDeviceStart(7, proc 2)"));
  EXPECT_TRUE(engine_.isRunning());
}

TEST_F(RestartTest, OnAnotherDeviceStopsThePreviousOne) {
  startAndForgetCalls(7);
  EXPECT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioDeviceStop(7, proc 1)",                           //
                                        "AudioDeviceDestroyIOProcID(7, proc 1)",                //
                                        "AudioObjectGetPropertyDataSize(9, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(9, slay inpt 0, size 40)",  //
                                        "AudioObjectGetPropertyDataSize(9, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(9, slay outp 0, size 72)",  //
                                        "AudioDeviceCreateIOProcID(9)",                         //
                                        "AudioDeviceStart(9, proc 2)"));
  EXPECT_EQ(engine_.currentDeviceID(), 9U);
  EXPECT_EQ(engine_.contextPtr()->inputChannelCount, 10);
  EXPECT_EQ(hal_.registrations().size(), 1U);
}

TEST_F(RestartTest, BeginsWithAFreshContext) {
  const std::vector<PatchConnection> first = {{0, 0, 1.0F, true}, {1, 1, 1.0F, true}};
  const std::vector<PatchConnection> second = {{1, 0, 0.25F, true}};
  ASSERT_EQ(engine_.start(7, first), std::nullopt);
  ASSERT_EQ(engine_.start(7, second), std::nullopt);
  const IOProcContext& context = *engine_.contextPtr();
  EXPECT_EQ(context.activeBuf, 1);
  EXPECT_EQ(context.countA, 0);
  ASSERT_EQ(context.countB, 1);
  EXPECT_EQ(context.patchesB[0].src, 1);
  EXPECT_EQ(context.patchesB[1].src, -1) << "nothing of the first run is left";
}

TEST_F(RestartTest, ThatFailsToRegisterLeavesTheEngineIdle) {
  startAndForgetCalls(7);
  hal_.answerNext(HalCall::createIOProcID, -1);
  EXPECT_EQ(engine_.start(9, {}), (EngineError{Case::createProcFailed, -1}));
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioDeviceStop(7, proc 1)",                           //
                                        "AudioDeviceDestroyIOProcID(7, proc 1)",                //
                                        "AudioObjectGetPropertyDataSize(9, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(9, slay inpt 0, size 40)",  //
                                        "AudioObjectGetPropertyDataSize(9, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(9, slay outp 0, size 72)",  //
                                        "AudioDeviceCreateIOProcID(9)"));
  expectIdle();
  EXPECT_EQ(engine_.currentDeviceID(), 9U);
}

TEST_F(RestartTest, ThatFailsToStartLeavesTheEngineIdle) {
  startAndForgetCalls(7);
  hal_.answerNext(HalCall::start, -2);
  EXPECT_EQ(engine_.start(7, {}), (EngineError{Case::startFailed, -2}));
  std::vector<std::string> calls = hal_.takeCalls();
  std::erase_if(calls, [](const std::string& call) { return call.starts_with("AudioObjectGet"); });
  EXPECT_THAT(calls, ElementsAre("AudioDeviceStop(7, proc 1)",             //
                                 "AudioDeviceDestroyIOProcID(7, proc 1)",  //
                                 "AudioDeviceCreateIOProcID(7)",           //
                                 "AudioDeviceStart(7, proc 2)",            //
                                 "AudioDeviceDestroyIOProcID(7, proc 2)"));
  expectIdle();
}

TEST_F(RestartTest, IsNotRunningWhileTheChannelsAreCounted) {
  startAndForgetCalls(7);
  std::vector<bool> runningDuringQueries;
  hal_.onCall = [&](const std::string& call) {
    if (call.starts_with("AudioObjectGet")) runningDuringQueries.push_back(engine_.isRunning());
  };
  EXPECT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_THAT(runningDuringQueries, ElementsAre(false, false, false, false));
}

}  // namespace
}  // namespace tolvane::test
