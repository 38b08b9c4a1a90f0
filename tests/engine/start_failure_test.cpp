// A start that fails: the error, the calls, and that nothing is left behind.
#include "engine_fixture.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using Case = EngineError::Case;

class StartFailureTest : public EngineTest {
 protected:
  /// The calls after the channel counts, which are the same for every start.
  std::vector<std::string> callsAfterCounting() {
    std::vector<std::string> calls = hal_.takeCalls();
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("AudioObjectGet"); });
    return calls;
  }
};

TEST_F(StartFailureTest, RegistrationRefused) {
  hal_.answerNext(HalCall::createIOProcID, kAudioHardwareIllegalOperationError);
  EXPECT_EQ(engine_.start(7, {}), (EngineError{Case::createProcFailed, kAudioHardwareIllegalOperationError}));
  EXPECT_THAT(callsAfterCounting(), ElementsAre("AudioDeviceCreateIOProcID(7)"));
  expectIdle();
  EXPECT_EQ(engine_.currentDeviceID(), 7U);
}

TEST_F(StartFailureTest, RegistrationWithoutIdentifierCarriesStatusZero) {
  hal_.withholdNextProcID();
  EXPECT_EQ(engine_.start(7, {}), (EngineError{Case::createProcFailed, 0}));
  EXPECT_THAT(callsAfterCounting(), ElementsAre("AudioDeviceCreateIOProcID(7)"));
  expectIdle();
  EXPECT_EQ(engine_.currentDeviceID(), 7U);
}

TEST_F(StartFailureTest, DeviceStartRefusedUnregistersWithoutStopping) {
  hal_.answerNext(HalCall::start, -50);
  EXPECT_EQ(engine_.start(7, {}), (EngineError{Case::startFailed, -50}));
  EXPECT_THAT(callsAfterCounting(), ElementsAre("AudioDeviceCreateIOProcID(7)", "AudioDeviceStart(7, proc 1)",
                                                "AudioDeviceDestroyIOProcID(7, proc 1)"));
  expectIdle();
  EXPECT_EQ(engine_.currentDeviceID(), 7U);
}

TEST_F(StartFailureTest, CarriesTheStatusOfTheStartNotOfTheUnregistering) {
  hal_.answerNext(HalCall::start, kAudioDevicePermissionsError);
  hal_.answerNext(HalCall::destroyIOProcID, kAudioHardwareBadDeviceError);
  EXPECT_EQ(engine_.start(7, {}), (EngineError{Case::startFailed, kAudioDevicePermissionsError}));
  expectIdle();
}

TEST_F(StartFailureTest, KeepsTheContextUntilTheRegistrationIsGone) {
  hal_.answerNext(HalCall::start, -50);
  bool contextAtDestroy = false;
  hal_.onCall = [&](const std::string& call) {
    if (call.starts_with("AudioDeviceDestroy")) contextAtDestroy = engine_.contextPtr() != nullptr;
  };
  EXPECT_NE(engine_.start(7, {}), std::nullopt);
  EXPECT_TRUE(contextAtDestroy);
}

TEST_F(StartFailureTest, StopAfterwardsCallsNothing) {
  hal_.answerNext(HalCall::start, -50);
  EXPECT_NE(engine_.start(7, {}), std::nullopt);
  hal_.takeCalls();
  engine_.stop();
  EXPECT_THAT(hal_.calls(), ElementsAre());
}

TEST_F(StartFailureTest, NextStartSucceeds) {
  hal_.answerNext(HalCall::createIOProcID, -1);
  EXPECT_NE(engine_.start(7, {}), std::nullopt);
  hal_.takeCalls();
  EXPECT_EQ(engine_.start(7, {}), std::nullopt);
  EXPECT_THAT(callsAfterCounting(),
              ElementsAre("AudioDeviceCreateIOProcID(7)", "AudioDeviceStart(7, proc 1)"));
  EXPECT_TRUE(engine_.isRunning());
}

}  // namespace
}  // namespace tolvane::test
