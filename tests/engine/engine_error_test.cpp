// The texts that the user reads when a start fails.
#include "engine/engine_error.h"

#include <limits>

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using Case = EngineError::Case;

TEST(EngineErrorText, OfARefusedRegistration) {
  EXPECT_EQ((EngineError{Case::createProcFailed, 1852797029}.errorDescription()),
            "AudioDeviceCreateIOProcID failed (1852797029).\n"
            "Grant Microphone access: System Settings → Privacy & Security → Microphone.");
}

TEST(EngineErrorText, OfARegistrationWithoutIdentifierShowsZero) {
  EXPECT_EQ((EngineError{Case::createProcFailed, 0}.errorDescription()),
            "AudioDeviceCreateIOProcID failed (0).\n"
            "Grant Microphone access: System Settings → Privacy & Security → Microphone.");
}

TEST(EngineErrorText, OfARefusedDeviceStart) {
  EXPECT_EQ((EngineError{Case::startFailed, -50}.errorDescription()),
            "AudioDeviceStart failed (-50).\n"
            "Is another app using the device exclusively?");
}

TEST(EngineErrorText, ShowsTheSmallestStatusSigned) {
  EXPECT_EQ((EngineError{Case::startFailed, std::numeric_limits<OSStatus>::min()}.errorDescription()),
            "AudioDeviceStart failed (-2147483648).\n"
            "Is another app using the device exclusively?");
}

TEST(EngineErrorEquality, TakesCaseAndStatus) {
  EXPECT_EQ((EngineError{Case::startFailed, 1}), (EngineError{Case::startFailed, 1}));
  EXPECT_NE((EngineError{Case::startFailed, 1}), (EngineError{Case::startFailed, 2}));
  EXPECT_NE((EngineError{Case::startFailed, 1}), (EngineError{Case::createProcFailed, 1}));
}

}  // namespace
}  // namespace tolvane::test
