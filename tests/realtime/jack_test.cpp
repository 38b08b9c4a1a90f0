// The JACK driver's IO path, on a private jackd with short cycles.
#include "engine/core_audio_engine.h"
#include "hal/servers/engine_client.h"
#include "realtime/io_path_watch.h"
#include "support/jack_server.h"

namespace tolvane::test {
namespace {

class JackIoPath : public testing::Test {
 protected:
  void start() {
    const std::vector<PatchConnection> routes = {{0, 0, 1.0F, true}, {1, 1, 0.5F, true}, {0, 1, 0.25F, true}};
    ASSERT_FALSE(engine_.start(deviceNamed(engine_, "system"), routes));
  }

  JackServer server_{16};
  CoreAudioEngine engine_{&watchedIoProc};
};

TEST_F(JackIoPath, AllocatesTwiceAndNothingElseInEveryCycle) {
  IoPathWatch watch(IoPathWatch::Part::libraryCallback);
  ASSERT_NO_FATAL_FAILURE(start());
  expectRightCycles(watch, kWatchedCycles);
  engine_.stop();
}

TEST_F(JackIoPath, EachMisdeedIsSeen) {
  IoPathWatch watch(IoPathWatch::Part::libraryCallback);
  ASSERT_NO_FATAL_FAILURE(start());
  expectEachMisdeedIsSeen(watch);
  engine_.stop();
}

}  // namespace
}  // namespace tolvane::test
