// A card is removed while a callback runs on it, its driver is unloaded, and it comes back under another
// number.
#include <atomic>

#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "alsa_guest/loopback_bench.h"
#include "hal/hal_client.h"

namespace tolvane::test {
namespace {

void unplug() {
  // The first command returns when nobody has the card open any more. The second fails while somebody has.
  ASSERT_TRUE(runInGuest("echo snd_aloop.0 > /sys/bus/platform/drivers/snd_aloop/unbind"));
  ASSERT_TRUE(runInGuest("rmmod snd_aloop"));
}

void plugIn(int number) {
  ASSERT_TRUE(runInGuest("modprobe snd-aloop pcm_substreams=1 index=" + std::to_string(number)));
}

std::atomic<int> listChanges{0};

OSStatus countChange(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) {
  ++listChanges;
  return noErr;
}

TEST(AlsaRemovedCard, IsSilentUntilItIsBackAndThenPlaysOn) {
  const AudioObjectID device = expectDeviceOf("alsa:Loopback");
  ASSERT_NE(device, kAudioObjectUnknown);
  const std::size_t channels = streamsOf(device, kAudioObjectPropertyScopeInput).size();
  std::atomic<std::uint64_t> cycles{0};
  std::atomic<bool> wrongBuffers{false};
  RegisteredProc proc(device, [&](const AudioBufferList& input, const AudioBufferList& output) {
    if (input.mNumberBuffers != channels || output.mNumberBuffers != channels) wrongBuffers = true;
    ++cycles;
  });
  ASSERT_EQ(proc.start(), noErr);
  for (const int number : {7, 5, 8, 5}) {
    ASSERT_TRUE(eventually([&, before = cycles.load()] { return cycles > before + 20; }));
    EXPECT_TRUE(isAlive(device));
    unplug();
    EXPECT_TRUE(eventually([&] { return !isAlive(device); }));
    EXPECT_TRUE(eventually([] { return deviceOf("alsa:Loopback") == kAudioObjectUnknown; }));
    const std::uint64_t atLoss = cycles;
    plugIn(number);
    EXPECT_TRUE(eventually([&] { return cycles > atLoss; }));
    EXPECT_TRUE(eventually([&] { return isAlive(device); }));
    EXPECT_EQ(expectDeviceOf("alsa:Loopback"), device);
  }
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_FALSE(wrongBuffers);
}

TEST(AlsaRemovedCard, CanBeStoppedWhileItIsAway) {
  const AudioObjectID device = expectDeviceOf("alsa:Loopback");
  ASSERT_NE(device, kAudioObjectUnknown);
  std::atomic<std::uint64_t> cycles{0};
  RegisteredProc proc(device, [&](const AudioBufferList&, const AudioBufferList&) { ++cycles; });
  ASSERT_EQ(proc.start(), noErr);
  ASSERT_TRUE(eventually([&] { return cycles > 10; }));
  unplug();
  EXPECT_TRUE(eventually([&] { return !isAlive(device); }));
  EXPECT_EQ(proc.stop(), noErr);
  const std::uint64_t atStop = cycles;
  plugIn(5);
  EXPECT_TRUE(eventually([&] { return deviceOf("alsa:Loopback") == device; }));
  EXPECT_EQ(cycles, atStop);
}

TEST(AlsaRemovedCard, ComingAndGoingIsToldOf) {
  ASSERT_NE(expectDeviceOf("alsa:Loopback"), kAudioObjectUnknown);
  const auto list = address(kAudioHardwarePropertyDevices);
  ASSERT_EQ(AudioObjectAddPropertyListener(kAudioObjectSystemObject, &list, &countChange, nullptr), noErr);
  listChanges = 0;
  unplug();
  EXPECT_TRUE(eventually([] { return listChanges >= 1; }));
  plugIn(5);
  EXPECT_TRUE(eventually([] { return listChanges >= 2; }));
  EXPECT_EQ(AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &list, &countChange, nullptr), noErr);
}

}  // namespace
}  // namespace tolvane::test
