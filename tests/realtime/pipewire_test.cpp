// The PipeWire driver's IO path, on a private server with short cycles. The device's channels are one
// interleaved stream, which the driver gathers and scatters.
#include "engine/core_audio_engine.h"
#include "hal/servers/engine_client.h"
#include "realtime/io_path_watch.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

class PipeWireIoPath : public testing::Test {
 protected:
  void start() {
    const AudioDeviceID device = deviceNamed(engine_, "card");
    const auto size = address(kAudioDevicePropertyBufferFrameSize);
    const UInt32 frames = 32;
    ASSERT_EQ(AudioObjectSetPropertyData(device, &size, 0, nullptr, sizeof frames, &frames), noErr);
    std::vector<PatchConnection> routes;
    for (std::int64_t r = 0; r < 64; ++r) routes.push_back({r % 4, r % 6, r % 3 == 0 ? 1.0F : 0.5F, true});
    ASSERT_FALSE(engine_.start(device, routes));
  }

  PipeWireServer server_{{{.name = "card", .inputs = 4, .outputs = 6, .cardId = 900}}};
  CoreAudioEngine engine_{&watchedIoProc};
};

TEST_F(PipeWireIoPath, AllocatesTwiceAndNothingElseInEveryCycle) {
  IoPathWatch watch(IoPathWatch::Part::libraryCallback);
  ASSERT_NO_FATAL_FAILURE(start());
  expectRightCycles(watch, kWatchedCycles);
  engine_.stop();
}

TEST_F(PipeWireIoPath, EachMisdeedIsSeen) {
  IoPathWatch watch(IoPathWatch::Part::libraryCallback);
  ASSERT_NO_FATAL_FAILURE(start());
  expectEachMisdeedIsSeen(watch);
  engine_.stop();
}

}  // namespace
}  // namespace tolvane::test
