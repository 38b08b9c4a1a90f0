// In builds with thread checks, a call that its thread tag forbids ends the process. Tested on a real IO
// thread, that of the virtual device.
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "base/thread_check.h"
#include "core/patch/patch_file.h"
#include "engine/core_audio_engine.h"
#include "hal/hal_client.h"

namespace tolvane::test {
namespace {

/// Runs the virtual device until a callback has made the call.
void callInCallback(void (*call)()) {
  std::atomic<bool> called = false;
  RegisteredProc proc(deviceList().back(), [&](auto&, auto&) {
    if (!called.exchange(true)) call();
  });
  EXPECT_EQ(proc.start(), noErr);
  EXPECT_TRUE(eventually([&] { return called.load(); }));
}

// Other tests may have started threads of the HAL, which a fork would lack. The "threadsafe" style runs each
// test in a new process.
class ThreadTagsDeathTest : public testing::Test {
 protected:
  ThreadTagsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

IOProcContext context = initialContext(2, 2);

TEST_F(ThreadTagsDeathTest, PublicationInTheCallback) {
  EXPECT_DEATH(callInCallback([] { writeConnections(&context, {}); }),
               "tolvane: fatal: writeConnections was called inside an IO callback\n");
}

TEST_F(ThreadTagsDeathTest, EngineInTheCallback) {
  EXPECT_DEATH(callInCallback([] { CoreAudioEngine::shared().stop(); }),
               "tolvane: fatal: shared was called inside an IO callback\n");
  EXPECT_DEATH(callInCallback([] { CoreAudioEngine().stop(); }),
               "tolvane: fatal: stop was called inside an IO callback\n");
}

TEST_F(ThreadTagsDeathTest, HalPropertiesInTheCallback) {
  EXPECT_DEATH(callInCallback([] { deviceList(); }),
               "tolvane: fatal: AudioObjectGetPropertyDataSize was called inside an IO callback\n");
  EXPECT_DEATH(
      callInCallback([] { (void)CFStringCreateWithCString(nullptr, "text", kCFStringEncodingUTF8); }),
      "tolvane: fatal: CFStringCreateWithCString was called inside an IO callback\n");
}

TEST_F(ThreadTagsDeathTest, PatchFileInTheCallback) {
  EXPECT_DEATH(callInCallback([] { (void)decodePatch("[]"); }),
               "tolvane: fatal: decodePatch was called inside an IO callback\n");
}

TEST_F(ThreadTagsDeathTest, EngineOnAnotherThreadThanTheMainOne) {
  EXPECT_DEATH(
      {
        CoreAudioEngine engine;
        engine.stop();
        std::thread([&engine] { engine.stop(); }).join();
      },
      "tolvane: fatal: stop was called on a thread that is not the main thread\n");
}

TEST(ThreadTagsTest, TheRoleOfTheMainThreadCanBeHandedOver) {
  writeConnections(&context, {});
  std::thread([] {
    becomeMainThread();
    writeConnections(&context, {});
  }).join();
  becomeMainThread();
  writeConnections(&context, {});
}

TEST(ThreadTagsTest, WhatIsForAnyThreadIsForTheCallbackToo) {
  callInCallback([] {
    context = initialContext(2, 2);
    EXPECT_EQ(CFStringGetLength(nullptr), 0);
    EXPECT_EQ(CFRetain(nullptr), nullptr);
  });
}

TEST(ThreadTagsTest, TheThreadOfACallbackIsFreeWhenItHasReturned) {
  const AudioBufferList none{};
  AudioBufferList out{};
  EXPECT_EQ(halIOProc(1, nullptr, &none, nullptr, &out, nullptr, nullptr), noErr);
  writeConnections(&context, {});
}

// A function that promises a status to an IO thread returns it.
TEST(ThreadTagsTest, StoppingInTheCallbackIsRefused) {
  callInCallback([] {
    const auto anyProc = &halIOProc;
    EXPECT_EQ(AudioDeviceStop(1, anyProc), kAudioHardwareIllegalOperationError);
    EXPECT_EQ(AudioDeviceStart(1, anyProc), kAudioHardwareIllegalOperationError);
  });
}

}  // namespace
}  // namespace tolvane::test
