#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/core_audio_engine.h"
#include "support/scripted_hal.h"

namespace tolvane::test {

/// An engine on a scripted HAL with two devices: 7 (a stream of 2 in, one of 2 out) and 9 (streams of 2 and 8
/// in, four of 1 out).
class EngineTest : public testing::Test {
 protected:
  EngineTest() {
    hal_.devices = {
        {.id = 7, .name = "Seven", .inputStreams = {2}, .outputStreams = {2}},
        {.id = 9, .name = "Nine", .inputStreams = {2, 8}, .outputStreams = {1, 1, 1, 1}},
    };
  }
  ~EngineTest() override {
    hal_.onCall = nullptr;  // it may refer to variables on the test's stack
    engine_.stop();
  }

  void startAndForgetCalls(AudioDeviceID device) {
    ASSERT_EQ(engine_.start(device, {}), std::nullopt);
    hal_.takeCalls();
  }

  void expectIdle() const {
    EXPECT_FALSE(engine_.isRunning());
    EXPECT_EQ(engine_.contextPtr(), nullptr);
    EXPECT_EQ(engine_.procID(), nullptr);
    EXPECT_THAT(hal_.registrations(), testing::IsEmpty());
  }

  ScriptedHal hal_;
  CoreAudioEngine engine_;
};

}  // namespace tolvane::test
