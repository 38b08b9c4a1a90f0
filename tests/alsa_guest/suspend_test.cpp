// The machine goes to sleep while a callback runs on its card, and wakes up again.
#include <atomic>
#include <ctime>

#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "hal/hal_client.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

/// Seconds that the machine has slept since its start.
double secondsAsleep() {
  timespec all{};
  timespec awake{};
  clock_gettime(CLOCK_BOOTTIME, &all);
  clock_gettime(CLOCK_MONOTONIC, &awake);
  return static_cast<double>(all.tv_sec - awake.tv_sec) +
         static_cast<double>(all.tv_nsec - awake.tv_nsec) / 1e9;
}

/// Puts the machine to sleep; returns some seconds later, when it is awake again.
void sleepAndWake() {
  ASSERT_TRUE(runInGuest(
      "echo 0 > /sys/class/rtc/rtc0/wakealarm && echo +3 > /sys/class/rtc/rtc0/wakealarm && echo mem > "
      "/sys/power/state"));
}

TEST(AlsaSuspend, TheCallbackRunsOnWhenTheMachineIsAwakeAgain) {
  const AudioObjectID device = expectDeviceOf("alsa:Intel");
  ASSERT_NE(device, kAudioObjectUnknown);
  std::atomic<std::uint64_t> cycles{0};
  std::atomic<std::uint32_t> wrongBuffers{0};
  RegisteredProc proc(device, [&](const AudioBufferList& input, const AudioBufferList& output) {
    if (input.mNumberBuffers != 2 || output.mNumberBuffers != 2) ++wrongBuffers;
    ++cycles;
  });
  ASSERT_EQ(proc.start(), noErr);
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(eventually([&, before = cycles.load()] { return cycles > before + 20; })) << round;
    const double asleep = secondsAsleep();
    sleepAndWake();
    EXPECT_GT(secondsAsleep() - asleep, 1.0);
    const std::uint64_t awake = cycles;
    EXPECT_TRUE(eventually(std::chrono::seconds(2), [&] { return cycles > awake; })) << round;
    EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyDeviceIsAlive), 1U) << round;
    // Wait: on a slow machine a list may come too late and lack the card.
    EXPECT_TRUE(eventually([&] { return deviceOf("alsa:Intel") == device; })) << round;
  }
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(wrongBuffers, 0U);
}

}  // namespace
}  // namespace tolvane::test
