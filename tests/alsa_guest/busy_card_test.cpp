// Cards that somebody else uses.
#include <csignal>
#include <cstdlib>

#include <alsa/asoundlib.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "alsa_guest/guest_machine.h"
#include "hal/alsa/alsa_driver.h"
#include "hal/hal_client.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

/// Keeps one direction of the dummy card in use.
class Holder {
 public:
  explicit Holder(snd_pcm_stream_t stream) {
    EXPECT_EQ(snd_pcm_open(&pcm_, "hw:CARD=Dummy,DEV=0", stream, 0), 0);
    EXPECT_EQ(
        snd_pcm_set_params(pcm_, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1, 44100, 0, 100'000),
        0);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { snd_pcm_close(pcm_); }

 private:
  snd_pcm_t* pcm_ = nullptr;
};

class AlsaBusyCard : public testing::TestWithParam<snd_pcm_stream_t> {};

TEST_P(AlsaBusyCard, IsListedAsBeforeAndNotStartedNorOpenedByHalf) {
  const auto driver = hal::makeAlsaDriver();
  const auto idle = find(*driver, "alsa:Dummy");
  ASSERT_TRUE(idle);
  RoutingClient client(*idle, {});
  {
    const Holder holder(GetParam());
    EXPECT_EQ(driver->setBufferFrames(*idle, 1024), OSStatus{kAudioDevicePermissionsError});
    EXPECT_EQ(find(*driver, "alsa:Dummy"), idle);
    const auto refused = driver->start(*idle, client);
    EXPECT_EQ(refused.status, OSStatus{kAudioDevicePermissionsError});
    EXPECT_FALSE(refused.session);
    EXPECT_EQ(pcmStatus("Dummy", GetParam() == SND_PCM_STREAM_CAPTURE ? "pcm0p" : "pcm0c"), "closed\n");
  }
  auto started = driver->start(*idle, client);
  EXPECT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.cycles() >= 10; }));
}

TEST_P(AlsaBusyCard, FromTheFirstOnIsListedAsFarAsItIsKnown) {
  const Holder holder(GetParam());
  const auto driver = hal::makeAlsaDriver();
  const auto device = find(*driver, "alsa:Dummy");
  ASSERT_TRUE(device);
  const bool capture = GetParam() == SND_PCM_STREAM_CAPTURE;
  EXPECT_EQ((capture ? device->inputStreams : device->outputStreams).size(), 1U);
  EXPECT_EQ((capture ? device->outputStreams : device->inputStreams).size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Directions, AlsaBusyCard,
                         testing::Values(SND_PCM_STREAM_PLAYBACK, SND_PCM_STREAM_CAPTURE),
                         [](const auto& stream) { return std::string(snd_pcm_stream_name(stream.param)); });

TEST(AlsaBusyCardStatus, ComesOutOfTheHal) {
  const Holder holder(SND_PCM_STREAM_PLAYBACK);
  AudioObjectID dummy = kAudioObjectUnknown;
  ASSERT_TRUE(eventually([&] {
    for (const AudioObjectID id : deviceList()) {
      if (stringOf(id, kAudioDevicePropertyDeviceUID) == "alsa:Dummy") dummy = id;
    }
    return dummy != kAudioObjectUnknown;
  }));
  RegisteredProc proc(dummy, [](const AudioBufferList&, const AudioBufferList&) {});
  EXPECT_EQ(proc.start(), OSStatus{kAudioDevicePermissionsError});
}

TEST(AlsaBusyCardOfASoundServer, IsTheServersUntilItIsGone) {
  const auto driver = hal::makeAlsaDriver();
  ASSERT_TRUE(find(*driver, "alsa:Dummy"));
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t server = fork();
  if (server == 0) {
    prctl(PR_SET_NAME, "wireplumber");
    const int control = open("/dev/snd/controlC6", O_RDWR);
    const char sign = control >= 0 ? 'y' : 'n';
    if (write(ready[1], &sign, 1) == 1) pause();
    _exit(1);
  }
  char sign = '?';
  EXPECT_EQ(read(ready[0], &sign, 1), 1);
  EXPECT_EQ(sign, 'y');
  const auto held = find(*driver, "alsa:Dummy");
  ASSERT_TRUE(held);
  EXPECT_TRUE(held->isHeld);
  EXPECT_TRUE(find(*driver, "alsa:Loopback"));
  kill(server, SIGKILL);
  waitpid(server, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
  const auto free = find(*driver, "alsa:Dummy");
  ASSERT_TRUE(free);
  EXPECT_FALSE(free->isHeld);
}

TEST(AlsaCardOfOurOwn, StaysListedWhileItRuns) {
  const auto driver = hal::makeAlsaDriver();
  const auto device = find(*driver, "alsa:Dummy");
  ASSERT_TRUE(device);
  RoutingClient client(*device, {});
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  hal::DeviceInfo running = *device;
  running.alsaCards.clear();  // stays listed although a sound server that came later lists its card
  EXPECT_EQ(find(*driver, "alsa:Dummy"), running);
}

}  // namespace
}  // namespace tolvane::test
