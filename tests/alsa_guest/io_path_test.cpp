// The ALSA driver's IO path on an emulated card: see tests/realtime.
#include <sys/syscall.h>

#include "alsa_guest/guest_machine.h"
#include "engine/core_audio_engine.h"
#include "hal/hal_client.h"
#include "realtime/io_path_watch.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

/// How its thread waits for the card and for the program, and asks the card where it is. The machine may have
/// no clock that can be read without a system call.
constexpr AllowedCall kWaits[] = {{"poll", SYS_poll},
                                  {"ioctl", SYS_ioctl},
                                  {"eventfd_read", SYS_read},
                                  {"clock_gettime", SYS_clock_gettime},
                                  {nullptr, -1}};

class AlsaIoPath : public testing::Test {
 protected:
  void start() {
    const AudioDeviceID device = expectDeviceOf("alsa:Dummy");
    const auto size = address(kAudioDevicePropertyBufferFrameSize);
    const auto range = valueOf<AudioValueRange>(device, kAudioDevicePropertyBufferFrameSizeRange);
    const auto frames = std::max(UInt32{64}, static_cast<UInt32>(range.mMinimum));
    // The machine may be too slow for a listing in time, and then the device counts as gone.
    ASSERT_TRUE(eventually([&] {
      return AudioObjectSetPropertyData(device, &size, 0, nullptr, sizeof frames, &frames) == noErr;
    }));
    const std::vector<PatchConnection> routes = {{0, 0, 1.0F, true}, {1, 1, 0.5F, true}, {0, 1, 0.25F, true}};
    ASSERT_TRUE(eventually([&] { return !engine_.start(device, routes); }));
  }

  CoreAudioEngine engine_{&watchedIoProc};
};

TEST_F(AlsaIoPath, AllocatesTwiceAndNothingElseInEveryCycle) {
  IoPathWatch watch(IoPathWatch::Part::wholeThread, kWaits);
  ASSERT_NO_FATAL_FAILURE(start());
  expectRightCycles(watch, kWatchedCycles);
  engine_.stop();
}

TEST_F(AlsaIoPath, EachMisdeedIsSeen) {
  IoPathWatch watch(IoPathWatch::Part::wholeThread, kWaits);
  ASSERT_NO_FATAL_FAILURE(start());
  expectEachMisdeedIsSeen(watch);
  engine_.stop();
}

}  // namespace
}  // namespace tolvane::test
