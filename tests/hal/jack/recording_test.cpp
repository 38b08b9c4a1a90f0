#include <algorithm>

#include <sndfile.h>

#include "hal/jack/routing_fixture.h"

namespace tolvane::test {
namespace {

std::vector<float> readMono(const std::string& path) {
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) return {};
  EXPECT_EQ(info.channels, 1);
  EXPECT_EQ(info.samplerate, 48000);
  std::vector<float> samples(static_cast<std::size_t>(info.frames));
  EXPECT_EQ(sf_readf_float(file, samples.data(), info.frames), info.frames);
  sf_close(file);
  return samples;
}

class JackRecording : public JackRoutingFixture {};

TEST_F(JackRecording, ComesThroughAPatchBitForBit) {
  // Spoken channel names, as the card's inputs 1 to 4; input 5 counts frames.
  std::vector<std::vector<float>> voices;
  for (const char* name : {"Front_Left", "Front_Right", "Rear_Left", "Rear_Right"}) {
    voices.push_back(readMono(std::string("/usr/share/sounds/alsa/") + name + ".wav"));
    ASSERT_GT(voices.back().size(), 40000U) << name;
    ASSERT_GT(*std::max_element(voices.back().begin(), voices.back().end()), 0.1F);
  }
  startServer();
  JackTestClient card = JackTestClient::card("card", 5, 6);
  card.setSignal([&voices](std::size_t channel, std::uint64_t frame) {
    if (channel == 4) return static_cast<float>(frame) / static_cast<float>(1U << 24);
    return voices[channel][frame % voices[channel].size()];
  });
  card.activate();
  route("card", std::vector<PatchConnection>{{0, 3, 1.0F, true},
                                             {1, 2, 1.0F, true},
                                             {2, 1, 1.0F, true},
                                             {3, 5, 1.0F, true},
                                             {4, 0, 1.0F, true}});
  JackTestClient ear = JackTestClient::ear("ear", 6);
  ear.activate();
  listen(ear, 6);
  settle(ear);

  ear.record(3 * kSecond);  // each voice more than once
  ASSERT_TRUE(ear.awaitRecording());
  const std::uint32_t first = codeOf(ear.recording(0)[0]);
  const std::vector<std::size_t> outputOf{3, 2, 1, 5};
  for (std::size_t voice = 0; voice < voices.size(); ++voice) {
    std::vector<float> wanted;
    for (std::size_t i = 0; i < 3 * kSecond; ++i)
      wanted.push_back(voices[voice][(first + i) % voices[voice].size()]);
    expectSame(ear.recording(outputOf[voice]), wanted, "voice " + std::to_string(voice));
  }
  expectSame(ear.recording(4), std::vector<float>(3 * kSecond, 0.0F), "the unrouted output");
}

}  // namespace
}  // namespace tolvane::test
