// Stopping: the order of the steps, and that it is allowed at any time.
#include "engine_fixture.h"
#include "support/captured_output.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using StopTest = EngineTest;

TEST_F(StopTest, CallsNothingWhenIdle) {
  engine_.stop();
  EXPECT_THAT(hal_.calls(), IsEmpty());
  expectIdle();
  EXPECT_EQ(engine_.currentDeviceID(), 0U);
}

TEST_F(StopTest, StopsTheDeviceThenUnregisters) {
  startAndForgetCalls(7);
  engine_.stop();
  EXPECT_THAT(hal_.calls(),
              ElementsAre("AudioDeviceStop(7, proc 1)", "AudioDeviceDestroyIOProcID(7, proc 1)"));
  expectIdle();
}

TEST_F(StopTest, KeepsTheDeviceOfTheLastStart) {
  startAndForgetCalls(7);
  engine_.stop();
  EXPECT_EQ(engine_.currentDeviceID(), 7U);
}

TEST_F(StopTest, CallsNothingTheSecondTime) {
  startAndForgetCalls(7);
  engine_.stop();
  hal_.takeCalls();
  engine_.stop();
  EXPECT_THAT(hal_.calls(), IsEmpty());
  expectIdle();
}

TEST_F(StopTest, IgnoresTheStatusesOfStopAndUnregister) {
  startAndForgetCalls(7);
  hal_.answerNext(HalCall::stop, kAudioHardwareBadDeviceError);
  hal_.answerNext(HalCall::destroyIOProcID, kAudioHardwareBadObjectError);
  engine_.stop();
  EXPECT_THAT(hal_.calls(),
              ElementsAre("AudioDeviceStop(7, proc 1)", "AudioDeviceDestroyIOProcID(7, proc 1)"));
  expectIdle();
}

TEST_F(StopTest, KeepsTheContextUntilTheCallbackIsUnregistered) {
  startAndForgetCalls(7);
  const IOProcContext* const context = engine_.contextPtr();
  std::vector<const IOProcContext*> duringCalls;
  hal_.onCall = [&](const std::string&) { duringCalls.push_back(engine_.contextPtr()); };
  engine_.stop();
  EXPECT_THAT(duringCalls, ElementsAre(context, context));
}

TEST_F(StopTest, PrintsNothing) {
  startAndForgetCalls(7);
  EXPECT_THAT(outputLinesOf([this] { engine_.stop(); }), IsEmpty());
}

}  // namespace
}  // namespace tolvane::test
